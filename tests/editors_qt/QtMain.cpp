// The tests of the Qt side need a QApplication, on the offscreen platform so
// they run without a display and the clipboard stays inside the process.

#include <gtest/gtest.h>

#include <QApplication>

int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    ::testing::InitGoogleTest(&argc, argv);
    QApplication app(argc, argv);
    return RUN_ALL_TESTS();
}
