#pragma once

// The store keeps Windows-1252 text; widgets show Unicode. Text crosses here,
// and only here, on its way between a page and the store.

#include <string>
#include <string_view>

#include <QString>

#include "platform/Charset.h"

namespace vliptc::editors {

inline QString FromStoreText(std::string_view stored) {
    return QString::fromStdString(platform::Cp1252ToUtf8(stored));
}

// Characters that Windows-1252 lacks become "?".
inline std::string ToStoreText(const QString& text) { return platform::Utf8ToCp1252(text.toStdString()); }

}  // namespace vliptc::editors
