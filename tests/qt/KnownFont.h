#pragma once

#include <QApplication>
#include <QFont>
#include <QFontInfo>

namespace kelvo {

/// A wide one, in which what fits also fits in most others.
constexpr const char* kWideFont = "DejaVu Sans";
/// What the desktop of System Settings is set in.
constexpr const char* kPlasmaFont = "Noto Sans";

/// Whether a font is there; otherwise something else would be measured in its place. scripts/install-missing names the
/// packages.
inline bool hasFont(const char* family) { return QFontInfo(QFont(family)).family() == family; }

/// Sets everything in a font while it lasts, so that what is measured does not hang on what else the machine has.
class FontInUse {
public:
    explicit FontInUse(const char* family) : previous_(QApplication::font()) {
        QFont font = previous_;
        font.setFamilies({family});
        QApplication::setFont(font);
    }
    ~FontInUse() { QApplication::setFont(previous_); }
    FontInUse(const FontInUse&) = delete;
    FontInUse& operator=(const FontInUse&) = delete;

private:
    QFont previous_;
};

} // namespace kelvo
