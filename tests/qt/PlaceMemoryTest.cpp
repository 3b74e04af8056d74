#include "hosts/window/PlaceMemory.h"

#include "support/TemporaryDirectory.h"

#include <gtest/gtest.h>

namespace kelvo {

namespace {

class PlaceMemoryTest : public testing::Test {
protected:
    /// Opens a window, lets `change` have it and closes it; gives where it was when it opened.
    template <typename Change>
    QRect openAnd(Change change) {
        QWidget window;
        window.resize(300, 200);
        const PlaceMemory memory(window, file_);
        window.show();
        const QRect opened = window.geometry();
        change(window);
        window.close();
        return opened;
    }

    static void nothing(QWidget&) {}

    TemporaryDirectory folder_;
    QString file_ = QString::fromStdString(folder_.path("below/window.ini"));
};

TEST_F(PlaceMemoryTest, WindowOpensAsItWasClosed) {
    const QRect place(120, 140, 500, 320);
    openAnd([&](QWidget& window) { window.setGeometry(place); });
    EXPECT_EQ(openAnd(nothing), place);
    EXPECT_EQ(openAnd(nothing), place);
}

TEST_F(PlaceMemoryTest, FirstWindowAndOneWithADamagedFileOpenAsTheyAre) {
    EXPECT_EQ(openAnd(nothing).size(), QSize(300, 200));
    for (const char* contents : {"", "[General]\ngeometry=@ByteArray(broken)\n", "\x01\x02[[["}) {
        SCOPED_TRACE(contents);
        file_ = QString::fromStdString(folder_.write("damaged.ini", contents));
        EXPECT_EQ(openAnd(nothing).size(), QSize(300, 200));
    }
}

TEST_F(PlaceMemoryTest, FolderThatCannotBeWrittenIsNoReasonNotToClose) {
    file_ = QStringLiteral("/proc/nowhere/window.ini");
    EXPECT_EQ(openAnd(nothing).size(), QSize(300, 200));
}

} // namespace

} // namespace kelvo
