#include <QGuiApplication>

#include <gtest/gtest.h>

// Placeholder frames draw text, which needs a GUI application; the offscreen
// platform also serves the test listing at build time, when no display is set.
int main(int argc, char** argv)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication app(argc, argv);
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
