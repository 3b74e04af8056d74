#include "qt/WrappedLabel.h"

#include <gtest/gtest.h>

namespace kelvo {

namespace {

constexpr char kLongText[] = "How far apart the two taps of a double click may be, as a text that needs several lines";

/// What the toolkit says of a label with the same text and font.
int heightOfPlainLabel(const QLabel& label, int width) {
    QLabel plain(label.text());
    plain.setWordWrap(true);
    plain.setFont(label.font());
    return plain.heightForWidth(width);
}

TEST(WrappedLabel, IsAsHighAsAPlainLabelAtEveryWidthAskedForOnceOrAgain) {
    WrappedLabel label(kLongText);
    label.setWordWrap(true);
    ASSERT_GT(label.heightForWidth(100), label.heightForWidth(400));
    for (const int width : {100, 400, 100, 400}) {
        EXPECT_EQ(label.heightForWidth(width), heightOfPlainLabel(label, width));
    }
}

TEST(WrappedLabel, ForgetsHeightsWhenItsTextOrFontChanges) {
    WrappedLabel label(kLongText);
    label.setWordWrap(true);
    const int before = label.heightForWidth(150);

    QFont large = label.font();
    large.setPointSize(3 * large.pointSize());
    label.setFont(large);
    EXPECT_GT(label.heightForWidth(150), before);
    EXPECT_EQ(label.heightForWidth(150), heightOfPlainLabel(label, 150));

    label.setText("short");
    EXPECT_EQ(label.heightForWidth(150), heightOfPlainLabel(label, 150));
}

} // namespace

} // namespace kelvo
