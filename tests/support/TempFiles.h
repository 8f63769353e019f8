#pragma once

#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>

// Texts in failure messages as text, not as bytes.
inline void PrintTo(const QString& text, std::ostream* out) { *out << '"' << text.toStdString() << '"'; }

namespace torvex::test {

// Writes bytes to a file, failing the test if that is not possible.
inline QString writeFile(const QString& path, const QByteArray& bytes)
{
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::WriteOnly)) << path.toStdString();
    file.write(bytes);
    return path;
}

// Runs a Python snippet with `input` on its stdin and returns what it printed;
// a non-zero exit fails the test. The interpreter is the one generated code
// must satisfy (TORVEX_TEST_PYTHON, else the system's, with NumPy and Pillow).
inline QString runPython(const QString& code, const QStringList& args = {}, const QByteArray& input = {})
{
    QProcess python;
    python.start(qEnvironmentVariable("TORVEX_TEST_PYTHON", "/usr/bin/python3"), QStringList{"-c", code} + args);
    python.write(input);
    python.closeWriteChannel();
    EXPECT_TRUE(python.waitForFinished(300000) && python.exitStatus() == QProcess::NormalExit);
    EXPECT_EQ(python.exitCode(), 0) << python.readAllStandardError().toStdString();
    return QString::fromUtf8(python.readAllStandardOutput()).trimmed();
}

} // namespace torvex::test
