#pragma once

#include "qt/DesktopMotion.h"
#include "qt/PictogramFrame.h"

#include <QHash>
#include <QIcon>
#include <QPainter>
#include <QPixmap>
#include <QRectF>
#include <QString>

#include <map>
#include <memory>
#include <optional>
#include <string>

namespace kelvo {

/// The pictograms that lie in a bundle. A pictogram of what can be chosen has the name that is also the key of the
/// choice's text.
///
/// Nothing is read before something is asked for. What stands still is drawn once for each size and colour.
class Pictograms {
public:
    /// The pictograms of the loaded bundle of that identifier.
    explicit Pictograms(std::string bundleIdentifier);

    /// The name of the pictogram of the choice that reads so in the user's language; empty when there is none.
    [[nodiscard]] QString nameOfText(const QString& text);

    /// A pictogram at rest, `side` pixels wide and high; null when there is none of that name.
    [[nodiscard]] QPixmap pixmap(const QString& name, int side, const PictogramColours& colours);

    /// Draws a pictogram at a point of its motion, from 0 to 1.
    void paint(QPainter& painter, const QRectF& place, const QString& name, const PictogramColours& colours,
               double progress);

    /// Whether pictograms on `widget` may move. The desktop is asked when this is, for the first time.
    [[nodiscard]] bool mayMoveOn(const QWidget& widget);
    /// Tells when that may have changed.
    [[nodiscard]] const DesktopMotion& desktopMotion() const { return desktopMotion_; }

private:
    struct Pictogram {
        QString path;
        QString text;
        /// What is written in it; none before it is drawn.
        QByteArray svg;
    };

    using Catalogue = std::map<QString, Pictogram>;

    Catalogue& catalogue();
    [[nodiscard]] QByteArray svgOf(const QString& name);

    std::string bundleIdentifier_;
    /// By their names; none before the bundle was looked into.
    std::optional<Catalogue> catalogue_;
    QHash<QString, QPixmap> pixmaps_;
    DesktopMotion desktopMotion_;
    bool desktopWasAsked_ = false;
};

/// An icon that shows a pictogram, turned clockwise by so many degrees, in the colours of the application.
[[nodiscard]] QIcon pictogramIcon(std::shared_ptr<Pictograms> pictograms, const QString& name, double angle);

} // namespace kelvo
