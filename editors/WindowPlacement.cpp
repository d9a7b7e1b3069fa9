// Window placements in the application profile (see WindowPlacement.h).

#include "editors/WindowPlacement.h"

#include <algorithm>
#include <cstdint>
#include <limits>

#include <QGuiApplication>
#include <QRect>
#include <QScreen>
#include <QWidget>

#include "editors/Settings.h"

namespace vliptc::editors {

namespace {

constexpr char kFlags[] = "wp.flags";
constexpr char kShowCmd[] = "wp.showCmd";
constexpr char kMinX[] = "wp.ptMinPosition.x";
constexpr char kMinY[] = "wp.ptMinPosition.y";
constexpr char kMaxX[] = "wp.ptMaxPosition.x";
constexpr char kMaxY[] = "wp.ptMaxPosition.y";
constexpr char kLeft[] = "wp.left";
constexpr char kTop[] = "wp.top";
constexpr char kRight[] = "wp.right";
constexpr char kBottom[] = "wp.bottom";

constexpr int kPlacementNumbers = 6;  // left, top, right, bottom, showCmd, flags

// A rectangle extent from two stored edges, which may be anything: 64-bit,
// so no difference overflows.
std::int64_t Extent(int low, int high) { return static_cast<std::int64_t>(high) - low; }

int ClampedExtent(int low, int high) {
    return static_cast<int>(std::clamp<std::int64_t>(Extent(low, high), 0, QWIDGETSIZE_MAX));
}

bool OverlapsScreen(const SWindowPlacement& p, QSize screen) {
    return std::max(p.left, 0) < std::min(p.right, screen.width()) &&
           std::max(p.top, 0) < std::min(p.bottom, screen.height());
}

// The whole rectangle on the screen and no larger than it. An empty or
// inverted rectangle would make a window of no size: it is refused too.
bool WithinScreen(const SWindowPlacement& p, QSize screen) {
    return p.left >= 0 && p.top >= 0 && p.right <= screen.width() && p.bottom <= screen.height() &&
           Extent(p.left, p.right) <= screen.width() && Extent(p.top, p.bottom) <= screen.height() &&
           p.right > p.left && p.bottom > p.top;
}

bool IsSpace(QChar c) {
    return c == u' ' || c == u'\t' || c == u'\n' || c == u'\v' || c == u'\f' || c == u'\r';
}

// One "%d" at pos: blanks, an optional sign, at least one digit.
bool ReadInt(const QString& text, qsizetype& pos, int& out) {
    while (pos < text.size() && IsSpace(text[pos])) ++pos;
    bool negative = false;
    if (pos < text.size() && (text[pos] == u'+' || text[pos] == u'-')) negative = text[pos++] == u'-';
    const qsizetype first = pos;
    std::int64_t value = 0;
    constexpr std::int64_t kLimit = static_cast<std::int64_t>(std::numeric_limits<int>::max()) + 1;
    while (pos < text.size() && text[pos] >= u'0' && text[pos] <= u'9') {
        value = value * 10 + (text[pos].unicode() - u'0');
        if (value > kLimit) return false;
        ++pos;
    }
    if (pos == first) return false;
    if (negative) value = -value;
    if (value > std::numeric_limits<int>::max()) return false;
    out = static_cast<int>(value);
    return true;
}

}  // namespace

SWindowPlacement GetWindowPlacement(const QWidget& window) {
    SWindowPlacement placement;
    QRect normal = window.normalGeometry();
    if (!normal.isValid()) normal = window.geometry();
    placement.left = normal.x();
    placement.top = normal.y();
    placement.right = normal.x() + normal.width();
    placement.bottom = normal.y() + normal.height();
    if (window.isMinimized()) {
        placement.showCmd = kShowMinimized;
        if (window.isMaximized()) placement.flags |= kPlacementRestoreToMaximized;
    } else if (window.isMaximized()) {
        placement.showCmd = kShowMaximized;
    } else {
        placement.showCmd = kShowNormal;
    }
    return placement;
}

void SetWindowPlacement(QWidget& window, const SWindowPlacement& placement) {
    const Qt::WindowStates kept =
        window.windowState() & ~(Qt::WindowMinimized | Qt::WindowMaximized | Qt::WindowFullScreen);
    // The normal rectangle is set in the normal state, so it is what the
    // window returns to from a minimised or maximised state.
    window.setWindowState(kept);
    window.setGeometry(placement.left, placement.top, ClampedExtent(placement.left, placement.right),
                       ClampedExtent(placement.top, placement.bottom));

    Qt::WindowStates state = kept;
    switch (placement.showCmd) {
        case kShowHide:
            window.hide();
            return;
        case kShowMinimized:
        case kMinimize:
        case kShowMinNoActive:
        case kForceMinimize:
            state |= Qt::WindowMinimized;
            if ((placement.flags & kPlacementRestoreToMaximized) != 0) state |= Qt::WindowMaximized;
            break;
        case kShowMaximized:
            state |= Qt::WindowMaximized;
            break;
        default:
            break;  // the normal and restoring commands
    }
    window.setWindowState(state);
    window.show();
}

QString FormatPlacementString(const SWindowPlacement& p) {
    return QStringLiteral("%1,%2,%3,%4,%5,%6")
        .arg(p.left)
        .arg(p.top)
        .arg(p.right)
        .arg(p.bottom)
        .arg(p.showCmd)
        .arg(p.flags);
}

bool ParsePlacementString(const QString& text, SWindowPlacement& placement) {
    int numbers[kPlacementNumbers] = {};
    qsizetype pos = 0;
    for (int i = 0; i < kPlacementNumbers; ++i) {
        if (i > 0) {
            if (pos >= text.size() || text[pos] != u',') return false;
            ++pos;
        }
        if (!ReadInt(text, pos, numbers[i])) return false;
    }
    placement.left = numbers[0];
    placement.top = numbers[1];
    placement.right = numbers[2];
    placement.bottom = numbers[3];
    placement.showCmd = numbers[4];
    placement.flags = numbers[5];
    return true;
}

QSize PrimaryScreenSize() {
    const QScreen* screen = QGuiApplication::primaryScreen();
    return screen != nullptr ? screen->geometry().size() : QSize();
}

bool WindowPlacement::LoadAndApply(std::string_view section, QWidget& window, int showCmd) const {
    if (m_profile->GetInt(section, kShowCmd, kNoPlacement) == kNoPlacement) return false;
    SWindowPlacement placement = GetWindowPlacement(window);
    Read(section, placement);
    if (!OverlapsScreen(placement, m_screen())) return false;
    placement.showCmd = showCmd;
    SetWindowPlacement(window, placement);
    return true;
}

void WindowPlacement::Read(std::string_view section, SWindowPlacement& p) const {
    p.flags = m_profile->GetInt(section, kFlags, p.flags);
    p.showCmd = m_profile->GetInt(section, kShowCmd, p.showCmd);
    p.ptMinPosition.setX(m_profile->GetInt(section, kMinX, p.ptMinPosition.x()));
    p.ptMinPosition.setY(m_profile->GetInt(section, kMinY, p.ptMinPosition.y()));
    p.ptMaxPosition.setX(m_profile->GetInt(section, kMaxX, p.ptMaxPosition.x()));
    p.ptMaxPosition.setY(m_profile->GetInt(section, kMaxY, p.ptMaxPosition.y()));
    p.left = m_profile->GetInt(section, kLeft, p.left);
    p.top = m_profile->GetInt(section, kTop, p.top);
    p.right = m_profile->GetInt(section, kRight, p.right);
    p.bottom = m_profile->GetInt(section, kBottom, p.bottom);
}

bool WindowPlacement::Store(std::string_view section, const QWidget& window) {
    return Write(section, GetWindowPlacement(window));
}

bool WindowPlacement::Write(std::string_view section, const SWindowPlacement& p) {
    m_profile->SetInt(section, kShowCmd, p.showCmd);
    m_profile->SetInt(section, kFlags, p.flags);
    m_profile->SetInt(section, kMinX, p.ptMinPosition.x());
    m_profile->SetInt(section, kMinY, p.ptMinPosition.y());
    m_profile->SetInt(section, kMaxX, p.ptMaxPosition.x());
    m_profile->SetInt(section, kMaxY, p.ptMaxPosition.y());
    m_profile->SetInt(section, kLeft, p.left);
    m_profile->SetInt(section, kRight, p.right);
    m_profile->SetInt(section, kTop, p.top);
    m_profile->SetInt(section, kBottom, p.bottom);
    return m_profile->Flush();
}

bool WindowPlacement::RestoreString(std::string_view section, std::string_view entry, QWidget& window) const {
    const QString text = m_profile->GetString(section, entry);
    if (text.isEmpty()) return false;
    SWindowPlacement placement = GetWindowPlacement(window);
    if (!ParsePlacementString(text, placement)) return false;
    if (!WithinScreen(placement, m_screen())) return false;
    SetWindowPlacement(window, placement);
    return true;
}

bool WindowPlacement::StoreString(std::string_view section, std::string_view entry, const QWidget& window) {
    return m_profile->WriteString(section, entry, FormatPlacementString(GetWindowPlacement(window)));
}

}  // namespace vliptc::editors
