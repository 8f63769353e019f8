#pragma once

#include <QFile>
#include <QImage>
#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <functional>

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

// The message of the std::runtime_error that `f` throws; empty when it throws none.
inline std::string failure(const std::function<void()>& f)
{
    try {
        f();
    } catch (const std::runtime_error& e) {
        return e.what();
    }
    return "";
}

inline QByteArray readFile(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : "<unreadable>";
}

// A gray image of one value, so that a frame tells which file it came from.
inline void writeGrayImage(const QString& path, int width, int height, int value)
{
    QImage image(width, height, QImage::Format_Grayscale8);
    image.fill(qRgb(value, value, value));
    EXPECT_TRUE(image.save(path)) << path.toStdString();
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
