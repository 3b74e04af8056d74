#include "qt/KnownFont.h"

#include <QApplication>
#include <QThreadPool>

#include <gtest/gtest.h>

#include <iostream>

int main(int argc, char* argv[]) {
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
    testing::InitGoogleTest(&argc, argv);
    const QApplication application(argc, argv);
    if (!kelvo::hasFont(kelvo::kWideFont)) {
        std::cerr << "These tests measure in " << kelvo::kWideFont << ", which is not installed.\n";
        return 1;
    }
    const kelvo::FontInUse font(kelvo::kWideFont);
    const int result = RUN_ALL_TESTS();
    // One of the toolkit's painting threads that ends together with the process would be taken for a leak.
    QThreadPool::globalInstance()->waitForDone();
    return result;
}
