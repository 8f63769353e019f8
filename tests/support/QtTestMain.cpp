#ifdef TORVEX_TEST_WIDGETS
#include <QApplication>
using TestApplication = QApplication;
#else
#include <QGuiApplication>
using TestApplication = QGuiApplication; // tests below the window link no widgets
#endif

#include <gtest/gtest.h>

// Widgets, fonts and queued signals need an application object. The offscreen
// platform also serves the test listing at build time, when no display is set.
int main(int argc, char** argv)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
    TestApplication app(argc, argv);
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
