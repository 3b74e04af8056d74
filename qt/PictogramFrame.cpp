#include "qt/PictogramFrame.h"

#include <QStringList>
#include <QXmlStreamReader>
#include <QXmlStreamWriter>

#include <algorithm>
#include <cmath>

namespace kelvo {

namespace {

/// What a part of a picture must at least have to be told from what is around it.
constexpr double kLeastContrast = 3.0;

double linear(double channel) {
    return channel <= 0.04045 ? channel / 12.92 : std::pow((channel + 0.055) / 1.055, 2.4);
}

double luminance(const QColor& colour) {
    return 0.2126 * linear(colour.redF()) + 0.7152 * linear(colour.greenF()) + 0.0722 * linear(colour.blueF());
}

double contrast(const QColor& one, const QColor& other) {
    const auto [darker, lighter] = std::minmax({luminance(one), luminance(other)});
    return (lighter + 0.05) / (darker + 0.05);
}

/// A point of a motion, of which most kinds have the first number alone.
struct Step {
    double x = 0.0;
    double y = 0.0;
};

Step parsedStep(const QString& text) {
    const QStringList numbers = text.simplified().split(QLatin1Char(' '));
    return {numbers.value(0).toDouble(), numbers.value(1).toDouble()};
}

/// Where a motion by these steps is, coming and going gently at each of them.
Step stepAt(const QString& steps, double progress) {
    const QStringList texts = steps.split(QLatin1Char(';'));
    const double last = static_cast<double>(texts.size()) - 1.0;
    const double place = std::clamp(progress, 0.0, 1.0) * last;
    const double before = std::min(std::floor(place), std::max(last - 1.0, 0.0));
    const double way = place - before;
    const double gone = way * way * (3.0 - 2.0 * way);
    const Step from = parsedStep(texts.value(static_cast<int>(before)));
    const Step to = parsedStep(texts.value(static_cast<int>(before) + 1));
    return {from.x + gone * (to.x - from.x), from.y + gone * (to.y - from.y)};
}

QString translation(double x, double y) { return QStringLiteral("translate(%1 %2)").arg(x).arg(y); }

/// The transformation of an element on its way; empty for one that stays where it is.
QString transformation(const QXmlStreamAttributes& attributes, double progress) {
    const auto number = [&](const char* name) { return attributes.value(QLatin1String(name)).toDouble(); };
    const auto step = [&](const char* name) {
        return stepAt(attributes.value(QLatin1String(name)).toString(), progress);
    };
    if (attributes.hasAttribute(QLatin1String("data-move"))) {
        const Step move = step("data-move");
        return translation(move.x, move.y);
    }
    if (attributes.hasAttribute(QLatin1String("data-turn"))) {
        return QStringLiteral("rotate(%1 12 12)").arg(step("data-turn").x);
    }
    if (attributes.hasAttribute(QLatin1String("data-scale"))) {
        const double x = number("cx");
        const double y = number("cy");
        return translation(x, y) + QStringLiteral(" scale(%1) ").arg(step("data-scale").x) + translation(-x, -y);
    }
    return {};
}

void addColour(QXmlStreamWriter& writer, const QXmlStreamAttributes& attributes, const PictogramColours& colours) {
    const auto kind = attributes.value(QLatin1String("class"));
    if (kind == QLatin1String("ink")) writer.writeAttribute(QStringLiteral("color"), colours.ink.name());
    if (kind == QLatin1String("fingers")) writer.writeAttribute(QStringLiteral("color"), colours.fingers.name());
}

void addMotion(QXmlStreamWriter& writer, const QXmlStreamAttributes& attributes, double progress) {
    const QString transform = transformation(attributes, progress);
    if (!transform.isEmpty()) writer.writeAttribute(QStringLiteral("transform"), transform);
    const QString opacity = attributes.value(QLatin1String("data-opacity")).toString();
    if (opacity.isEmpty()) return;
    writer.writeAttribute(QStringLiteral("opacity"), QString::number(stepAt(opacity, progress).x));
}

} // namespace

PictogramColours pictogramColours(const QPalette& palette, bool isEnabled) {
    const QPalette::ColorGroup group = isEnabled ? QPalette::Active : QPalette::Disabled;
    const QColor& ink = palette.color(group, QPalette::WindowText);
    const QColor& highlight = palette.color(group, QPalette::Highlight);
    const bool standsOut = contrast(highlight, palette.color(group, QPalette::Window)) >= kLeastContrast;
    return {ink, isEnabled && standsOut ? highlight : ink};
}

QByteArray pictogramFrame(const QByteArray& svg, const PictogramColours& colours, double progress) {
    QByteArray frame;
    QXmlStreamReader reader(svg);
    QXmlStreamWriter writer(&frame);
    while (!reader.atEnd()) {
        reader.readNext();
        if (reader.hasError()) return {};
        writer.writeCurrentToken(reader);
        if (!reader.isStartElement()) continue;
        addColour(writer, reader.attributes(), colours);
        if (progress > 0.0 && progress < 1.0) addMotion(writer, reader.attributes(), progress);
    }
    return frame;
}

} // namespace kelvo
