#pragma once

// Window placements of the editors, kept in the application profile in two
// forms.
//
// The "wp." form: ten integer values in a section, one per field of the
// placement record: "wp.flags", "wp.showCmd", "wp.ptMinPosition.x",
// "wp.ptMinPosition.y", "wp.ptMaxPosition.x", "wp.ptMaxPosition.y",
// "wp.left", "wp.top", "wp.right", "wp.bottom". A stored placement is
// applied when its normal rectangle overlaps the screen at all, with the show
// command the caller gives; a "wp.showCmd" that is absent (read as -9999)
// means nothing was ever stored.
//
// The string form: one string value "left,top,right,bottom,showCmd,flags"
// (decimal integers). It is applied only when its rectangle lies wholly on
// the screen and is no larger than it.
//
// The numbers keep the meaning they have in a Windows placement record, so
// a profile means the same on every platform: the show commands and flags
// below, and a rectangle whose right and bottom are one past its last pixel.
// The rectangle is that of the window's contents without the frame the
// window manager adds (QWidget::normalGeometry): it is what Qt can set back
// exactly everywhere. The minimised and maximised positions have no
// counterpart in Qt: they are stored as read (-1, -1 for a Qt window) and
// not applied.

#include <functional>
#include <string_view>

#include <QPoint>
#include <QSize>
#include <QString>

class QWidget;

namespace vliptc::editors {

class Profile;

// Show commands.
inline constexpr int kShowHide = 0;
inline constexpr int kShowNormal = 1;
inline constexpr int kShowMinimized = 2;
inline constexpr int kShowMaximized = 3;
inline constexpr int kShowNoActivate = 4;
inline constexpr int kShow = 5;
inline constexpr int kMinimize = 6;
inline constexpr int kShowMinNoActive = 7;
inline constexpr int kShowNA = 8;
inline constexpr int kRestore = 9;
inline constexpr int kShowDefault = 10;
inline constexpr int kForceMinimize = 11;

// Placement flags.
inline constexpr int kPlacementSetMinPosition = 1;
inline constexpr int kPlacementRestoreToMaximized = 2;

// "wp.showCmd" when no placement was ever stored.
inline constexpr int kNoPlacement = -9999;

struct SWindowPlacement {
    int flags = 0;
    int showCmd = kShowNormal;
    QPoint ptMinPosition{-1, -1};
    QPoint ptMaxPosition{-1, -1};
    // The normal-position rectangle.
    int left = 0;
    int top = 0;
    int right = 0;
    int bottom = 0;

    bool operator==(const SWindowPlacement&) const = default;
};

// The placement of a top-level window: its normal rectangle, and the show
// command of its state (minimised, maximised or normal; restore-to-maximised
// in the flags when it is minimised from maximised).
SWindowPlacement GetWindowPlacement(const QWidget& window);
// Sets the normal rectangle and the state of the show command. kShowHide sets
// the rectangle and hides the window (one not yet shown stays so); every other
// command shows it, minimised, maximised or normal.
void SetWindowPlacement(QWidget& window, const SWindowPlacement& placement);

// "left,top,right,bottom,showCmd,flags".
QString FormatPlacementString(const SWindowPlacement& placement);
// Reads six decimal integers separated by commas (blanks may precede each
// number; text after the sixth is ignored) into the rectangle, show command
// and flags of placement. False, with placement unchanged, when fewer than
// six numbers are read or one is outside the range of int.
bool ParsePlacementString(const QString& text, SWindowPlacement& placement);

// The size of the screen placements are checked against: the primary
// screen's (0, 0, width, height). Empty when there is no screen.
using ScreenSize = std::function<QSize()>;
QSize PrimaryScreenSize();

// The placement helper: the wp. form and the string form of a window in a
// profile. The profile must outlive the helper.
class WindowPlacement {
public:
    explicit WindowPlacement(Profile& profile, ScreenSize screen = PrimaryScreenSize)
        : m_profile(&profile), m_screen(std::move(screen)) {}

    // Restores the window from the wp. values of section: false, and nothing
    // applied, when none were stored or the stored rectangle does not overlap
    // the screen; otherwise applies them with showCmd in place of the stored
    // show command.
    bool LoadAndApply(std::string_view section, QWidget& window, int showCmd) const;
    // Reads the ten values into placement, each with its current field as the
    // default.
    void Read(std::string_view section, SWindowPlacement& placement) const;
    // Takes the window's placement and writes it as the ten values.
    bool Store(std::string_view section, const QWidget& window);
    bool Write(std::string_view section, const SWindowPlacement& placement);

    // The string form in value entry of section. RestoreString applies it
    // only when it parses and its rectangle is non-empty and lies within the
    // screen; it returns whether it applied it.
    bool RestoreString(std::string_view section, std::string_view entry, QWidget& window) const;
    bool StoreString(std::string_view section, std::string_view entry, const QWidget& window);

private:
    Profile* m_profile;
    ScreenSize m_screen;
};

}  // namespace vliptc::editors
