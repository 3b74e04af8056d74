#include "qt/Pictograms.h"
#include "TDGestureCatalogue.h"
#include "TDNames.h"
#include "linux/PosixFileManager.h"
#include "linux/StringsTable.h"
#include "qt/ToolkitPlatform.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QImage>
#include <QPainter>
#include <QSvgRenderer>
#include <QTransform>
#include <QXmlStreamReader>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <map>
#include <set>

namespace kelvo {

namespace {

using testing::IsSubsetOf;

constexpr int kSmallest = 24;
const PictogramColours kDarkOnLight = {QColor("#1b1b1b"), QColor("#2070b0")};

QStringList pictogramFiles() {
    QStringList paths;
    for (const QFileInfo& file :
         QDir(KELVO_RESOURCES "/pictograms").entryInfoList({"*.svg"}, QDir::Files, QDir::Name)) {
        paths.append(file.absoluteFilePath());
    }
    return paths;
}

QByteArray contentsOf(const QString& path) {
    QFile file(path);
    return file.open(QFile::ReadOnly) ? file.readAll() : QByteArray();
}

/// The pictograms by their names.
std::map<std::string, QByteArray> allPictograms() {
    std::map<std::string, QByteArray> all;
    for (const QString& path : pictogramFiles()) {
        all[QFileInfo(path).completeBaseName().toStdString()] = contentsOf(path);
    }
    return all;
}

void collectActions(const platform::NSMutableArray& catalogue, std::set<std::string>& actions) {
    for (std::size_t i = 0; i < catalogue.count(); ++i) {
        const platform::NSMutableArray descriptor =
            catalogue.objectAtIndex(i).dictionary().objectForKey(keys::descriptor).array();
        for (std::size_t j = 0; j < descriptor.count(); ++j) {
            actions.insert(descriptor.objectAtIndex(j).string().value_or(""));
        }
    }
}

std::set<std::string> actionsOfAllCatalogues() {
    std::set<std::string> actions;
    collectActions(initGesturesInformationForSnowLeopard(), actions);
    collectActions(initGesturesInformationForLion(), actions);
    collectActions(initGesturesInformationForMountainLion(), actions);
    return actions;
}

QImage drawn(const QByteArray& svg, int side, const PictogramColours& colours, double progress = 0.0,
             const QColor& background = Qt::transparent) {
    QImage image(side, side, QImage::Format_ARGB32_Premultiplied);
    image.fill(background);
    QPainter painter(&image);
    QSvgRenderer(pictogramFrame(svg, colours, progress)).render(&painter, QRectF(image.rect()));
    return image;
}

/// By how many wholly different pixels two pictures differ.
double difference(const QImage& one, const QImage& other) {
    double sum = 0.0;
    for (int y = 0; y < one.height(); ++y) {
        for (int x = 0; x < one.width(); ++x) {
            const QColor a = one.pixelColor(x, y);
            const QColor b = other.pixelColor(x, y);
            const int most =
                std::max({std::abs(a.red() - b.red()), std::abs(a.green() - b.green()), std::abs(a.blue() - b.blue())});
            sum += most / 255.0;
        }
    }
    return sum;
}

bool isEdgeClear(const QImage& image) {
    const int last = image.width() - 1;
    for (int i = 0; i <= last; ++i) {
        for (const QPoint point : {QPoint(i, 0), QPoint(i, last), QPoint(0, i), QPoint(last, i)}) {
            if (image.pixelColor(point).alpha() > 0) return false;
        }
    }
    return true;
}

double luminance(const QColor& colour) {
    const auto linear = [](double c) { return c <= 0.04045 ? c / 12.92 : std::pow((c + 0.055) / 1.055, 2.4); };
    return 0.2126 * linear(colour.redF()) + 0.7152 * linear(colour.greenF()) + 0.0722 * linear(colour.blueF());
}

double contrast(const QColor& one, const QColor& other) {
    const double a = luminance(one) + 0.05;
    const double b = luminance(other) + 0.05;
    return std::max(a, b) / std::min(a, b);
}

QPalette paletteOf(const char* window, const char* text, const char* highlight) {
    QPalette palette;
    for (const auto group : {QPalette::Active, QPalette::Inactive, QPalette::Disabled}) {
        palette.setColor(group, QPalette::Window, QColor(window));
        palette.setColor(group, QPalette::WindowText, QColor(text));
        palette.setColor(group, QPalette::Highlight, QColor(highlight));
    }
    return palette;
}

/// Windows of common desktops, light, dark and of high contrast; the highlight of the last two is hardly to be seen.
const QPalette palettes[] = {
    paletteOf("#efefef", "#000000", "#308cc6"), paletteOf("#eff0f1", "#232629", "#3daee9"),
    paletteOf("#2a2e32", "#fcfcfc", "#3daee9"), paletteOf("#000000", "#ffffff", "#ffff00"),
    paletteOf("#ffffff", "#000000", "#ffe080"), paletteOf("#202020", "#ffffff", "#303050"),
};

TEST(PictogramFiles, EveryActionOfEveryCatalogueHasOne) {
    std::set<std::string> names;
    for (const auto& [name, svg] : allPictograms()) names.insert(name);
    const std::set<std::string> actions = actionsOfAllCatalogues();
    EXPECT_EQ(actions.size(), 19U);
    EXPECT_THAT(actions, IsSubsetOf(names));
}

TEST(PictogramFiles, AreSmallWellFormedAndOfOneStyle) {
    const std::map<std::string, std::set<std::string>> style = {
        {"svg", {"width", "height", "viewBox"}},
        {"g",
         {"class", "fill", "stroke", "stroke-width", "stroke-linecap", "stroke-linejoin", "data-move", "data-turn",
          "data-opacity"}},
        {"path", {"d", "data-move"}},
        {"rect", {"x", "y", "width", "height", "rx"}},
        {"circle", {"cx", "cy", "r", "fill", "stroke", "stroke-width", "data-move", "data-scale"}},
    };
    const std::map<std::string, std::set<std::string>> values = {
        {"viewBox", {"0 0 24 24"}},
        {"class", {"ink", "fingers"}},
        {"fill", {"none", "currentColor"}},
        {"stroke", {"none", "currentColor"}},
    };
    for (const auto& [name, svg] : allPictograms()) {
        EXPECT_LT(svg.size(), 3000) << name;
        QXmlStreamReader reader(svg);
        while (!reader.atEnd()) {
            EXPECT_NE(reader.readNext(), QXmlStreamReader::DTD) << name;
            if (!reader.isStartElement()) continue;
            const std::string element = reader.name().toString().toStdString();
            ASSERT_TRUE(style.contains(element)) << name << ": " << element;
            for (const QXmlStreamAttribute& attribute : reader.attributes()) {
                const std::string key = attribute.qualifiedName().toString().toStdString();
                const std::string value = attribute.value().toString().toStdString();
                EXPECT_TRUE(style.at(element).contains(key)) << name << ": " << key;
                if (!values.contains(key)) continue;
                EXPECT_TRUE(values.at(key).contains(value)) << name << ": " << key << '=' << value;
            }
        }
        EXPECT_FALSE(reader.hasError()) << name;
    }
}

TEST(PictogramFiles, StayWithinTheirEdgesAtRestAndMoving) {
    for (const auto& [name, svg] : allPictograms()) {
        for (int step = 0; step <= 20; ++step) {
            EXPECT_TRUE(isEdgeClear(drawn(svg, 240, kDarkOnLight, step / 20.0))) << name << " at " << step;
        }
    }
}

TEST(PictogramFiles, EveryTwoDifferVisiblyWhenSmall) {
    std::map<std::string, QImage> pictures;
    for (const auto& [name, svg] : allPictograms()) {
        pictures[name] = drawn(svg, kSmallest, kDarkOnLight, 0.0, Qt::white);
    }
    for (auto one = pictures.begin(); one != pictures.end(); ++one) {
        for (auto other = std::next(one); other != pictures.end(); ++other) {
            EXPECT_GE(difference(one->second, other->second), 8.0) << one->first << " and " << other->first;
        }
    }
}

TEST(PictogramFiles, PicturesOfActionsMoveAndComeBackToRest) {
    const auto all = allPictograms();
    for (const std::string& action : actionsOfAllCatalogues()) {
        const QByteArray& svg = all.at(action);
        const QImage atRest = drawn(svg, 64, kDarkOnLight, 0.0, Qt::white);
        EXPECT_EQ(drawn(svg, 64, kDarkOnLight, 1.0, Qt::white), atRest) << action;
        EXPECT_GE(difference(drawn(svg, 64, kDarkOnLight, 0.3, Qt::white), atRest), 50.0) << action;
    }
}

TEST(PictogramFiles, TextsTellThemApartInEveryLanguage) {
    const QStringList languages = QDir(KELVO_RESOURCES).entryList({"*.lproj"}, QDir::Dirs);
    ASSERT_FALSE(languages.isEmpty());
    for (const QString& language : languages) {
        const auto contents = PosixFileManager().contentsAtPath(
            (QStringLiteral(KELVO_RESOURCES "/") + language + "/Localizable.strings").toStdString());
        ASSERT_TRUE(contents) << language.toStdString();
        const StringsTable table(*contents);
        std::map<std::string, std::string> actionByText;
        for (const std::string& action : actionsOfAllCatalogues()) {
            const std::optional<std::string> text = table.textForKey(action);
            if (!text) continue;
            const auto [known, isNew] = actionByText.emplace(*text, action);
            EXPECT_TRUE(isNew) << language.toStdString() << ": " << action << " reads like " << known->second;
        }
    }
}

TEST(PictogramColours, StandOutFromTheWindowAndFromOneAnotherWherePossible) {
    for (const QPalette& palette : palettes) {
        const PictogramColours colours = pictogramColours(palette, true);
        const QColor window = palette.color(QPalette::Active, QPalette::Window);
        EXPECT_GE(contrast(colours.ink, window), 3.0) << window.name().toStdString();
        EXPECT_GE(contrast(colours.fingers, window), 3.0) << window.name().toStdString();
    }
    EXPECT_EQ(pictogramColours(palettes[0], true).fingers, QColor("#308cc6"));
    EXPECT_EQ(pictogramColours(palettes[2], true).fingers, QColor("#3daee9"));
    EXPECT_EQ(pictogramColours(palettes[5], true).fingers, QColor("#ffffff"));
}

TEST(PictogramColours, PicturesStandOutFromLightAndDarkWindowsWhenSmall) {
    for (const auto& [name, svg] : allPictograms()) {
        for (const QPalette& palette : palettes) {
            const QColor window = palette.color(QPalette::Active, QPalette::Window);
            const QImage image = drawn(svg, kSmallest, pictogramColours(palette, true), 0.0, window);
            int clear = 0;
            for (int i = 0; i < kSmallest * kSmallest; ++i) {
                const QColor pixel = image.pixelColor(i % kSmallest, i / kSmallest);
                clear += contrast(pixel, window) >= 2.5 ? 1 : 0;
            }
            EXPECT_GE(clear, 20) << name << " on " << window.name().toStdString();
        }
    }
}

TEST(PictogramColours, WhatIsDisabledHasTheOneColourOfDisabledText) {
    QPalette palette = palettes[0];
    palette.setColor(QPalette::Disabled, QPalette::WindowText, QColor("#a0a0a0"));
    const PictogramColours colours = pictogramColours(palette, false);
    EXPECT_EQ(colours.ink, QColor("#a0a0a0"));
    EXPECT_EQ(colours.fingers, QColor("#a0a0a0"));
}

/// The element `name` of a frame in which it has these attributes.
QXmlStreamAttributes attributesAt(double progress, const char* attributes) {
    const QByteArray svg = "<svg><circle " + QByteArray(attributes) + "/></svg>";
    QXmlStreamReader reader(pictogramFrame(svg, kDarkOnLight, progress));
    while (!reader.atEnd()) {
        reader.readNext();
        if (reader.isStartElement() && reader.name() == QLatin1String("circle")) return reader.attributes();
    }
    return {};
}

std::string transformAt(double progress, const char* attributes) {
    return attributesAt(progress, attributes).value(QLatin1String("transform")).toString().toStdString();
}

TEST(PictogramFrame, GoesFromStepToStep) {
    EXPECT_EQ(transformAt(0.25, "data-move='0 0; 4 -3; 8 0'"), "translate(2 -1.5)");
    EXPECT_EQ(transformAt(0.5, "data-move='0 0; 4 -3; 8 0'"), "translate(4 -3)");
    EXPECT_EQ(transformAt(0.75, "data-move='0 0; 4 -3; 8 0'"), "translate(6 -1.5)");
    EXPECT_EQ(transformAt(0.5, "data-turn='0; 90; 0'"), "rotate(90 12 12)");
    EXPECT_EQ(transformAt(0.5, "cx='6' cy='7' data-scale='1; 0.5; 1'"), "translate(6 7) scale(0.5) translate(-6 -7)");
    EXPECT_EQ(attributesAt(0.5, "data-opacity='1; 0.5; 1'").value(QLatin1String("opacity")), QLatin1String("0.5"));
}

TEST(PictogramFrame, RestsAtBothEndsAndBeyond) {
    for (const double progress : {-1.0, 0.0, 1.0, 2.0}) {
        EXPECT_EQ(transformAt(progress, "data-move='1 1; 4 -3; 8 0'"), "") << progress;
    }
}

TEST(PictogramFrame, MotionWithoutStepsOrNumbersStaysInPlace) {
    EXPECT_EQ(transformAt(0.5, "data-move=''"), "translate(0 0)");
    EXPECT_EQ(transformAt(0.5, "data-move='3 4'"), "translate(3 4)");
    EXPECT_EQ(transformAt(0.5, "data-move=';;'"), "translate(0 0)");
    EXPECT_EQ(transformAt(0.5, "data-turn='left'"), "rotate(0 12 12)");
}

TEST(PictogramFrame, DrawingThatIsNotWellFormedIsNone) {
    EXPECT_TRUE(pictogramFrame("<svg><g></svg>", kDarkOnLight, 0.0).isEmpty());
    EXPECT_TRUE(pictogramFrame("", kDarkOnLight, 0.0).isEmpty());
    EXPECT_TRUE(pictogramFrame("a picture", kDarkOnLight, 0.5).isEmpty());
}

class PictogramsTest : public testing::Test {
protected:
    void SetUp() override {
        for (const QString& path : pictogramFiles()) platform_.bundle.resourcePaths.push_back(path.toStdString());
    }

    ToolkitPlatform platform_;
    Pictograms pictograms_{kTestBundleIdentifier};
};

TEST_F(PictogramsTest, PictogramIsFoundByTheTextOfItsAction) {
    platform_.bundle.texts["PinchWithTwoFingers"] = "Pincer à deux doigts";
    EXPECT_EQ(pictograms_.nameOfText(QStringLiteral("Pincer à deux doigts")), "PinchWithTwoFingers");
    EXPECT_EQ(pictograms_.nameOfText("text of RotateWithTwoFingers"), "RotateWithTwoFingers");
    EXPECT_EQ(pictograms_.nameOfText("PinchWithTwoFingers"), "");
    EXPECT_EQ(pictograms_.nameOfText(""), "");
}

TEST_F(PictogramsTest, NothingIsReadBeforeItIsAskedFor) {
    EXPECT_TRUE(platform_.bundle.keysAskedFor.empty());
    (void)pictograms_.nameOfText("anything");
    EXPECT_FALSE(platform_.bundle.keysAskedFor.empty());
}

TEST_F(PictogramsTest, PixmapHasTheSizeAndTheColoursAskedFor) {
    const QPixmap pixmap = pictograms_.pixmap("PinchWithTwoFingers", 48, {Qt::red, Qt::blue});
    EXPECT_EQ(pixmap.size(), QSize(48, 48));
    // A finger is at 4.5, 19.5 of 24, and the arrow goes through the middle.
    EXPECT_EQ(pixmap.toImage().pixelColor(9, 39), QColor(Qt::blue));
    EXPECT_EQ(pixmap.toImage().pixelColor(24, 24), QColor(Qt::red));
}

TEST_F(PictogramsTest, PixmapIsDrawnOnce) {
    const auto keyOf = [&](int side, const PictogramColours& colours) {
        return pictograms_.pixmap("PinchWithTwoFingers", side, colours).cacheKey();
    };
    const qint64 key = keyOf(48, kDarkOnLight);
    EXPECT_EQ(keyOf(48, kDarkOnLight), key);
    EXPECT_NE(keyOf(96, kDarkOnLight), key);
    EXPECT_NE(keyOf(48, {Qt::white, Qt::white}), key);
}

TEST_F(PictogramsTest, WhatThereIsNoPictogramOfIsNotDrawn) {
    EXPECT_TRUE(pictograms_.pixmap("", 24, kDarkOnLight).isNull());
    EXPECT_TRUE(pictograms_.pixmap("WaveWithBothHands", 24, kDarkOnLight).isNull());
    EXPECT_TRUE(pictograms_.pixmap("PinchWithTwoFingers", 0, kDarkOnLight).isNull());
    platform_.bundle.isLoaded = false;
    EXPECT_TRUE(Pictograms(kTestBundleIdentifier).pixmap("PinchWithTwoFingers", 24, kDarkOnLight).isNull());
}

TEST_F(PictogramsTest, IconIsThePictogramTurned) {
    const auto shared = std::make_shared<Pictograms>(kTestBundleIdentifier);
    const QIcon upright = pictogramIcon(shared, "DisplayTurned", 0.0);
    const QIcon turned = pictogramIcon(shared, "DisplayTurned", 90.0);
    const QImage expected = upright.pixmap(48, 48).toImage().transformed(QTransform().rotate(90.0));
    EXPECT_FALSE(expected.isNull());
    EXPECT_EQ(turned.pixmap(48, 48).toImage(), expected);
    EXPECT_NE(turned.pixmap(48, 48, QIcon::Disabled).toImage(), expected);
}

} // namespace

} // namespace kelvo
