// The editors' application profile through QSettings (see Settings.h).

#include "editors/Settings.h"

#include <QSettings>

namespace vliptc::editors {

namespace {

constexpr int kDefaultWriteMode = 0;
constexpr int kDefaultKeywordMode = 1;
constexpr int kDefaultAddSynonyms = 1;
constexpr int kLowestMode = 0;
constexpr int kHighestMode = 2;

// "Settings\IPTCEdit" + "WriteMode" -> "Settings/IPTCEdit/WriteMode".
QString Key(std::string_view section, std::string_view entry) {
    QString key = QString::fromUtf8(section.data(), static_cast<qsizetype>(section.size()));
    key.replace(QLatin1Char('\\'), QLatin1Char('/'));
    key += QLatin1Char('/');
    key += QString::fromUtf8(entry.data(), static_cast<qsizetype>(entry.size()));
    return key;
}

bool InRange(int mode) { return mode >= kLowestMode && mode <= kHighestMode; }

}  // namespace

std::unique_ptr<QSettings> OpenApplicationProfile() {
#ifdef Q_OS_WIN
    // The registry takes the "\" as the key separator, as the profile always had it.
    const QString application = QString::fromLatin1(kProfileApplication);
#else
    QString application = QString::fromLatin1(kProfileApplication);
    application.replace(QLatin1Char('\\'), QLatin1Char('/'));
#endif
    return std::make_unique<QSettings>(QSettings::NativeFormat, QSettings::UserScope,
                                       QString::fromLatin1(kProfileOrganization), application);
}

int Profile::GetInt(std::string_view section, std::string_view entry, int defaultValue) const {
    const QVariant value = m_settings.value(Key(section, entry));
    if (!value.isValid()) return defaultValue;
    bool ok = false;
    const int number = value.toInt(&ok);
    return ok ? number : defaultValue;
}

bool Profile::WriteInt(std::string_view section, std::string_view entry, int value) {
    SetInt(section, entry, value);
    return Flush();
}

void Profile::SetInt(std::string_view section, std::string_view entry, int value) {
    m_settings.setValue(Key(section, entry), value);
}

bool Profile::Flush() {
    m_settings.sync();
    return m_settings.status() == QSettings::NoError;
}

QString Profile::GetString(std::string_view section, std::string_view entry,
                           const QString& defaultValue) const {
    const QVariant value = m_settings.value(Key(section, entry));
    return value.isValid() ? value.toString() : defaultValue;
}

bool Profile::WriteString(std::string_view section, std::string_view entry, const QString& value) {
    m_settings.setValue(Key(section, entry), value);
    return Flush();
}

EditModes Profile::LoadEditModes() const {
    EditModes modes;  // the sheet's initial modes
    modes.writeMode = kDefaultWriteMode;
    modes.keywordMode = kDefaultKeywordMode;
    const int writeMode = GetInt(kSectionIPTCEdit, kValueWriteMode, kDefaultWriteMode);
    if (InRange(writeMode)) modes.writeMode = writeMode;
    const int keywordMode = GetInt(kSectionIPTCEdit, kValueKWMerge, kDefaultKeywordMode);
    if (InRange(keywordMode)) modes.keywordMode = keywordMode;
    return modes;
}

bool Profile::SaveEditModes(const EditModes& modes) {
    SetInt(kSectionIPTCEdit, kValueWriteMode, modes.writeMode);
    SetInt(kSectionIPTCEdit, kValueKWMerge, modes.keywordMode);
    return Flush();
}

bool Profile::LoadAddSynonyms() const {
    return GetInt(kSectionIPTCEditor, kValueAddSyn, kDefaultAddSynonyms) != 0;
}

bool Profile::SaveAddSynonyms(bool include) {
    return WriteInt(kSectionIPTCEditor, kValueAddSyn, include ? 1 : 0);
}

}  // namespace vliptc::editors
