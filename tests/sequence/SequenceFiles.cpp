#include "SequenceFiles.h"

#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>

QString sequenceFile(const QString& name)
{
    static QTemporaryDir dir;
    static const bool written = [] {
        const QString python = qEnvironmentVariable("TORVEX_TEST_PYTHON", "/usr/bin/python3");
        QProcess process;
        process.start(python, {TORVEX_SEQUENCE_FILES_SCRIPT, dir.path()});
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
