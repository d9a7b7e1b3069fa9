#pragma once

// The editors' per-user application profile: a few choices and the window
// placements, kept between runs under the profile root "Lumatrix",
// "Velora\3", as integers and strings in named sections:
//
//   section                value     type     default  accepted
//   "Settings\IPTCEdit"    WriteMode integer  0        0 to 2, else the sheet keeps 0
//   "Settings\IPTCEdit"    KWMerge   integer  1        0 to 2, else 1
//   "Settings\IPTCEdit"    wp.*      integers -        placement of the IPTC sheet
//   "EXIFDlg"              wp.*      integers -        placement of the EXIF viewer
//   "Settings\IPTCEditor"  AddSyn    integer  1        a check state: 0 off, else on
//   "Settings\IPTCEditor"  WP        string   empty    placement of the keyword chooser
//
// "EXIFDlg" has no "Settings\" prefix, unlike the others; profiles written by
// earlier versions have it so, and it stays so.
//
// Where the profile lives. QSettings in its native format: the registry on
// Windows (HKEY_CURRENT_USER\Software\Lumatrix\Velora\3\<section>), an INI
// file elsewhere. A "\" inside a section name is a key separator in the
// registry, so "Settings\IPTCEdit" is the key IPTCEdit inside the key
// Settings; we pass sections to QSettings with "/" in its place, which is
// QSettings's own group separator, and get the same nesting everywhere (on
// Linux QSettings would keep a "\" in a group name as a character of the name).
// The "\" of "Velora\3" likewise makes two registry keys; elsewhere QSettings
// would make it part of a file name ("Velora\3.conf"), so outside Windows the
// profile is the file Lumatrix/Velora/3.conf in the user's configuration
// folder (~/.config on Linux, or what QSettings::setPath sets for the native
// format and user scope).

#include <memory>
#include <string_view>

#include <QString>

#include "editors/EditorUI.h"

class QSettings;

namespace vliptc::editors {

inline constexpr char kProfileOrganization[] = "Lumatrix";
inline constexpr char kProfileApplication[] = "Velora\\3";

inline constexpr char kSectionIPTCEdit[] = "Settings\\IPTCEdit";      // IPTC sheet: modes, placement
inline constexpr char kSectionIPTCEditor[] = "Settings\\IPTCEditor";  // keyword and category chooser
inline constexpr char kSectionEXIFDlg[] = "EXIFDlg";                  // EXIF viewer placement

inline constexpr char kValueWriteMode[] = "WriteMode";
inline constexpr char kValueKWMerge[] = "KWMerge";
inline constexpr char kValueAddSyn[] = "AddSyn";
inline constexpr char kValueWP[] = "WP";

// The application profile of the current user.
std::unique_ptr<QSettings> OpenApplicationProfile();

// Typed access to a profile by section and value name, as the editors use it.
// The settings object must outlive the profile. Writes reach the store at
// once (QSettings::sync) and report whether they did.
class Profile {
public:
    explicit Profile(QSettings& settings) : m_settings(settings) {}

    // An integer value; defaultValue when it is absent or not an integer.
    int GetInt(std::string_view section, std::string_view entry, int defaultValue) const;
    bool WriteInt(std::string_view section, std::string_view entry, int value);
    // The same, left for the next Flush (or write): for a group of values that
    // goes out together.
    void SetInt(std::string_view section, std::string_view entry, int value);
    bool Flush();
    // A string value; defaultValue when it is absent.
    QString GetString(std::string_view section, std::string_view entry,
                      const QString& defaultValue = {}) const;
    bool WriteString(std::string_view section, std::string_view entry, const QString& value);

    // The write mode and keyword mode of the IPTC batch edit, with their
    // acceptance rules: a write mode outside 0 to 2 is ignored (0 stays), a
    // keyword mode outside 0 to 2 becomes 1.
    EditModes LoadEditModes() const;
    bool SaveEditModes(const EditModes& modes);

    // "Include synonyms" of the keyword chooser, stored as a check state:
    // 0 unchecked, anything else checked (a two-state box shows every value
    // above 0 as checked); written as 0 or 1.
    bool LoadAddSynonyms() const;
    bool SaveAddSynonyms(bool include);

    QSettings& Settings() noexcept { return m_settings; }

private:
    QSettings& m_settings;
};

}  // namespace vliptc::editors
