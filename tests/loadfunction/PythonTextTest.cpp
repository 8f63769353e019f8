#include "PythonProcess.h"
#include "toolboxes/importData/loadfunction/PythonText.h"
#include "toolboxes/importData/sequence/PythonPath.h"

#include <gtest/gtest.h>

using namespace torvex;

// Texts cross the pipe as hex of their UTF-16 units, so lone surrogates survive.
static const char* const kApplyToEachLine = R"(
import sys, posixpath
function = {"repr": repr, "dirname": posixpath.dirname}[sys.argv[1]]
for line in sys.stdin:
    text = bytes.fromhex(line.strip()).decode("utf-16-le", "surrogatepass")
    print(function(text).encode("utf-16-le", "surrogatepass").hex())
)";

static QByteArray utf16Hex(const QString& text)
{
    return QByteArray(reinterpret_cast<const char*>(text.utf16()), text.size() * 2).toHex();
}

static void expectSameAsPython(const char* function, QString (*ours)(const QString&), const QStringList& inputs)
{
    QByteArray input;
    for (const QString& text : inputs) input += utf16Hex(text) + '\n';
    const PythonRun run = runPython({"-c", kApplyToEachLine, function}, input);
    ASSERT_EQ(run.exitCode, 0) << run.err.toStdString();
    const QByteArrayList expected = run.out.chopped(1).split('\n');
    ASSERT_EQ(expected.size(), inputs.size());
    for (qsizetype i = 0, mismatches = 0; i < inputs.size() && mismatches < 10; ++i)
        if (const QByteArray actual = utf16Hex(ours(inputs[i])); actual != expected[i] && ++mismatches)
            ADD_FAILURE() << function << " of UTF-16 " << utf16Hex(inputs[i]).toStdString() << ": python "
                          << expected[i].toStdString() << ", ours " << actual.toStdString();
}

TEST(PythonText, ReprMatchesPython)
{
    QStringList inputs;
    // Every code point; surrogates stand alone, as a Python str can hold them.
    for (char32_t codePoint = 0; codePoint <= 0x10ffff; ++codePoint)
        inputs << (codePoint <= 0xffff ? QString(QChar(char16_t(codePoint))) : QString::fromUcs4(&codePoint, 1));
    const QChar high(char16_t(0xd800)), low(char16_t(0xdc00));
    inputs << "" << "it's" << "say \"hi\"" << "both ' and \"" << "'\"'\\" << "^img_\\d+\\.tif$" << "tab\tlf\ncr\r\x01"
           << QString::fromUtf16(u"\u00e9\u00d7 \u00a0\u00ad\u2028\ue000 \U0001F600\U000E0001")
           << QString("a") + high + "b" + low + low + high + "'" << QString("ends high ") + high;
    expectSameAsPython("repr", pythonRepr, inputs);
}

TEST(PythonText, DirnameMatchesPython)
{
    expectSameAsPython("dirname", pythonDirname,
                       {"", "a.png", "/", "//", "///", "/a", "//a/b", "///a", "a//b", "a/b/", "/a/b///c", "../",
                        QString::fromUtf16(u"\u00e9/\u00d7\U0001F600/f")});
}
