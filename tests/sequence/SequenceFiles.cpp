#include "SequenceFiles.h"

#include <QGuiApplication>
#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>

QString sequenceFile(const QString& name)
{
    static QTemporaryDir dir;
    static const bool written = [] {
        QProcess process;
        process.start(qEnvironmentVariable("TORVEX_TEST_PYTHON", "/usr/bin/python3"),
                      {TORVEX_SEQUENCE_FILES_SCRIPT, dir.path()});
        const bool ok = process.waitForFinished(60000) && process.exitCode() == 0;
        if (!ok) ADD_FAILURE() << process.readAllStandardError().toStdString();
        return ok;
    }();
    return written ? dir.filePath(name) : QString();
}

std::vector<int> bytesOf(const torvex::NdArray& array)
{
    std::vector<int> out;
    array.forEach([&](const std::byte* p) { out.push_back(static_cast<int>(*p)); });
    return out;
}

// Placeholder frames draw their text only when a GUI application exists.
struct GuiApplication : testing::Environment {
    int argc = 1;
    char name[14] = "sequence_test", *argv[2] = {name, nullptr};
    std::unique_ptr<QGuiApplication> app;
    void SetUp() override
    {
        if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
        app = std::make_unique<QGuiApplication>(argc, argv);
    }
    void TearDown() override { app.reset(); }
};
static testing::Environment* const guiApplication = testing::AddGlobalTestEnvironment(new GuiApplication);
