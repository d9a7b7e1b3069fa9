#pragma once

// What the tests of the Qt side share: widgets found by object name, the
// next modal window, and store values as text.

#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <initializer_list>
#include <stdexcept>
#include <string>
#include <vector>

#include <QApplication>
#include <QTimer>
#include <QWidget>

#include "iptc/IPTC.h"

namespace vliptc::test {

// The child of parent with that object name; a renamed widget throws, which
// fails the test instead of crashing it.
template <class Widget>
Widget& Child(const QObject& parent, const char* name) {
    auto* widget = parent.findChild<Widget*>(QString::fromLatin1(name));
    if (widget == nullptr) throw std::runtime_error(std::string("no widget ") + name);
    return *widget;
}

// Runs action on the modal window that the next call opens, once its event
// loop is up.
inline void OnModal(std::function<void(QWidget&)> action) {
    QTimer::singleShot(0, [action = std::move(action)] {
        QWidget* modal = QApplication::activeModalWidget();
        ASSERT_NE(modal, nullptr);
        action(*modal);
    });
}

inline std::vector<CVLProperty> Texts(std::initializer_list<const char*> texts) {
    std::vector<CVLProperty> values;
    for (const char* text : texts) values.emplace_back(text);
    return values;
}

inline std::vector<std::string> Strings(const std::vector<CVLProperty>& values) {
    std::vector<std::string> texts;
    for (const CVLProperty& value : values) texts.push_back(value.String());
    return texts;
}

// The values of a field of the store, as text.
inline std::vector<std::string> Stored(const CIPTC& store, std::uint32_t id) {
    std::vector<CVLProperty> values;
    static_cast<void>(store.GetField(id, values));
    return Strings(values);
}

}  // namespace vliptc::test
