#include "qt/Pictograms.h"

#include "platform/Bundle.h"

#include <QFile>
#include <QFileInfo>
#include <QGuiApplication>
#include <QIconEngine>
#include <QSvgRenderer>
#include <QTransform>

#include <algorithm>
#include <utility>

namespace kelvo {

namespace {

constexpr char kFolder[] = "pictograms";
/// Enough for all pictograms in a few sizes and colours; more means that the user has been changing those.
constexpr int kMostPixmaps = 200;

QByteArray contentsOf(const QString& path) {
    QFile file(path);
    return file.open(QFile::ReadOnly) ? file.readAll() : QByteArray();
}

/// Draws a pictogram wherever the toolkit puts icons.
class PictogramIconEngine final : public QIconEngine {
public:
    PictogramIconEngine(std::shared_ptr<Pictograms> pictograms, QString name, double angle)
        : pictograms_(std::move(pictograms)), name_(std::move(name)), angle_(angle) {}

    void paint(QPainter* painter, const QRect& rect, QIcon::Mode mode, QIcon::State) override {
        const int side = qMin(rect.width(), rect.height());
        QRect place(0, 0, side, side);
        place.moveCenter(rect.center());
        const QPixmap drawn = turned(qRound(side * painter->device()->devicePixelRatioF()), mode);
        if (!drawn.isNull()) painter->drawPixmap(place, drawn);
    }

    QPixmap pixmap(const QSize& size, QIcon::Mode mode, QIcon::State) override {
        return turned(qMin(size.width(), size.height()), mode);
    }

    [[nodiscard]] QIconEngine* clone() const override { return std::make_unique<PictogramIconEngine>(*this).release(); }

private:
    [[nodiscard]] QPixmap turned(int side, QIcon::Mode mode) const {
        const PictogramColours colours = pictogramColours(QGuiApplication::palette(), mode != QIcon::Disabled);
        const QPixmap upright = pictograms_->pixmap(name_, side, colours);
        return angle_ == 0.0 ? upright : upright.transformed(QTransform().rotate(angle_));
    }

    std::shared_ptr<Pictograms> pictograms_;
    QString name_;
    double angle_;
};

} // namespace

Pictograms::Pictograms(std::string bundleIdentifier) : bundleIdentifier_(std::move(bundleIdentifier)) {}

QString Pictograms::nameOfText(const QString& text) {
    if (text.isEmpty()) return {};
    const Catalogue& all = catalogue();
    const auto found = std::find_if(all.begin(), all.end(), [&](const auto& each) { return each.second.text == text; });
    return found == all.end() ? QString() : found->first;
}

QPixmap Pictograms::pixmap(const QString& name, int side, const PictogramColours& colours) {
    if (side <= 0 || svgOf(name).isEmpty()) return {};
    const QString key =
        QStringLiteral("%1 %2 %3 %4").arg(name).arg(side).arg(colours.ink.name(), colours.fingers.name());
    const auto known = pixmaps_.constFind(key);
    if (known != pixmaps_.constEnd()) return *known;

    QPixmap drawn(side, side);
    drawn.fill(Qt::transparent);
    QPainter painter(&drawn);
    paint(painter, drawn.rect(), name, colours, 0.0);
    painter.end();
    if (pixmaps_.size() >= kMostPixmaps) pixmaps_.clear();
    return *pixmaps_.insert(key, drawn);
}

void Pictograms::paint(QPainter& painter, const QRectF& place, const QString& name, const PictogramColours& colours,
                       double progress) {
    QSvgRenderer renderer(pictogramFrame(svgOf(name), colours, progress));
    if (renderer.isValid()) renderer.render(&painter, place);
}

bool Pictograms::mayMoveOn(const QWidget& widget) {
    if (!std::exchange(desktopWasAsked_, true)) desktopMotion_.askPortal(QDBusConnection::sessionBus());
    return desktopMotion_.isWantedOn(widget);
}

Pictograms::Catalogue& Pictograms::catalogue() {
    if (catalogue_) return *catalogue_;
    platform::NSBundle* const bundle = platform::NSBundle::bundleWithIdentifier(bundleIdentifier_);
    Catalogue& catalogue = catalogue_.emplace();
    if (!bundle) return catalogue;
    for (const std::string& path : bundle->pathsForResourcesOfTypeInDirectory("svg", kFolder)) {
        const QString file = QString::fromStdString(path);
        const QString name = QFileInfo(file).completeBaseName();
        catalogue[name] = {file, QString::fromStdString(bundle->localizedStringForKey(name.toStdString(), "")), {}};
    }
    return catalogue;
}

QByteArray Pictograms::svgOf(const QString& name) {
    const auto found = catalogue().find(name);
    if (found == catalogue().end()) return {};
    Pictogram& pictogram = found->second;
    if (pictogram.svg.isEmpty()) pictogram.svg = contentsOf(pictogram.path);
    return pictogram.svg;
}

QIcon pictogramIcon(std::shared_ptr<Pictograms> pictograms, const QString& name, double angle) {
    return QIcon(std::make_unique<PictogramIconEngine>(std::move(pictograms), name, angle).release());
}

} // namespace kelvo
