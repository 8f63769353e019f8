// The generated Python texts: their literals against Python's own, two reference
// texts to the character, and every text compiled by the interpreter.
#include "toolboxes/importData/loadfunction/ImageSequenceLoadFunction.h"
#include "toolboxes/importData/loadfunction/PythonText.h"
#include "toolboxes/importData/loadfunction/VolumeLoadFunction.h"
#include "toolboxes/importData/sequence/PythonPath.h"
#include "toolboxes/importData/volume/ImageTypes.h"

#include "../support/TempFiles.h"

#include <climits>
#include <random>

using namespace torvex;

namespace {

// Texts cross the pipe as hex of their UTF-16 units, so that lone surrogates survive.
QByteArray utf16Hex(const QString& text)
{
    return QByteArray(reinterpret_cast<const char*>(text.utf16()), text.size() * 2).toHex();
}

// Each line holds an input and our result; prints the first ten that Python's function disagrees with.
const char* const kCompareWithPython = R"(
import sys, posixpath
function = {"repr": repr, "dirname": posixpath.dirname}[sys.argv[1]]
wrong = 0
for line in sys.stdin:
    given, ours = (bytes.fromhex(h).decode("utf-16-le", "surrogatepass") for h in line.rstrip("\n").split(" "))
    if function(given) != ours and (wrong := wrong + 1) <= 10:
        print(f"{sys.argv[1]} of {given!a}: python {function(given)!a}, ours {ours!a}")
)";

void expectSameAsPython(const char* function, QString (*ours)(const QString&), const QStringList& inputs)
{
    QByteArray input;
    for (const QString& text : inputs) input += utf16Hex(text) + ' ' + utf16Hex(ours(text)) + '\n';
    EXPECT_EQ(test::runPython(kCompareWithPython, {function}, input), "");
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

TEST(VolumeLoadFunctionText, ReferenceExamplesToTheCharacter)
{
    const std::pair<LoadFunctionParams, const char*> cases[] = {
        {{.imgType = "16-bit Unsigned", .offset = 128, .width = 512, .height = 256, .frame = 4, .littleEndian = true,
          .keep_c_on_gray = true},
         "load_data_uint16_minimal.txt"},
        {{.imgType = "32-bit ARGB", .gap = 64, .width = 640, .height = 480, .frame = 3, .readOrder = "C",
          .colorOrder = "ABCABC", .permute = "0,2,1", .hflip = true, .data_format = "HWCD"},
         "load_data_argb_all_blocks.txt"}};
    for (const auto& [params, reference] : cases) {
        const QByteArray text = test::readFile(QStringLiteral(LOADFUNCTION_TEST_DIR "/data/") + reference);
        EXPECT_EQ(volumeLoadFunctionText(params).toStdString(), text.toStdString()) << reference;
    }
}

TEST(ImageSequenceLoadFunctionText, UsageCommentShowsFolderOfFirstFile)
{
    const auto usageComment = [](const QStringList& fileList) {
        const QStringList lines = imageSequenceLoadFunctionText(fileList, "*.png", false).split(u'\n');
        return lines.at(lines.size() - 2); // the text ends with a line feed
    };
    EXPECT_EQ(usageComment({"/data/shots/a.png", "/other/b.png"}), "# imgs = load_image_sequence(r\"/data/shots\")");
    EXPECT_EQ(usageComment({"a.png"}), "# imgs = load_image_sequence(r\"path/to/folder\")");
    EXPECT_EQ(usageComment({"C:\\x\"y/a.png"}), "# imgs = load_image_sequence(r\"C:\\x\"y\")"); // no escaping
    // A line end would end the comment: such a name is written as a literal.
    EXPECT_EQ(usageComment({"/x\ny/a.png"}), "# imgs = load_image_sequence('/x\\ny')");
    EXPECT_THROW(imageSequenceLoadFunctionText({}, "*.png", false), std::runtime_error);
}

// One text a line: its kind, the hex of its UTF-8 as a saved file holds it, and
// what made it. Compiles each and checks that the module holds exactly its own
// statements (nothing of a name or a pattern may leak out of its literal or
// comment and become code); prints the first ten that fail.
const char* const kCompileAll = R"(
import ast, sys
expected = {
    's': [('Import', None), ('Import', None), ('Import', None),
          ('FunctionDef', '_normalise_to_uint8'), ('FunctionDef', 'load_image_sequence')],
    'v': [('Import', None), ('FunctionDef', 'load_data')],
}
wrong = 0
for line in sys.stdin:
    kind, source, made_by = line.rstrip('\n').split(' ', 2)
    try:
        tree = compile(bytes.fromhex(source), 'case.py', 'exec', ast.PyCF_ONLY_AST, dont_inherit=True)
        compile(tree, 'case.py', 'exec', dont_inherit=True)
        body = [(type(n).__name__, getattr(n, 'name', None)) for n in tree.body]
        problem = None if body == expected[kind] else f'module statements {body}'
    except Exception as e:
        problem = f'{type(e).__name__}: {e}'.replace('\n', ' ')
    if problem and (wrong := wrong + 1) <= 10:
        print(f'{made_by}: {problem}')
)";

// A text made of the pieces that upset literals, comments and source files.
QString hazardText(std::mt19937& rng, int maxPieces)
{
    static const QStringList pieces = {
        "'", "\"", "\\", "\n", "\r", "\r\n", "\t", QString(QChar(u'\0')), "\x7f", QString(QChar(0x85)),
        QString(QChar(0x2028)), QString(QChar(0x2029)), "\x0c", "\x1b", QString::fromUtf8("\u00e9\u00d7"),
        QString::fromUtf8("\U0001F600"), QString(QChar(0xd800)), QString(QChar(0xdc00)), "'''", "\"\"\"", "#",
        "{x}", "*", ".", "?", "[a-z]", "\\x", "\\u", "\\N", " ", "abc", "img_07", ")", "/"};
    QString out;
    for (int i = std::uniform_int_distribution<int>(0, maxPieces)(rng); i > 0; --i)
        out += pieces[std::uniform_int_distribution<int>(0, pieces.size() - 1)(rng)];
    return out;
}

TEST(GeneratedCodeCompiles, ForAnyFilterAndFileNamesAndEveryVolumeLayout)
{
    bool ok = false;
    unsigned seed = qEnvironmentVariableIntValue("TORVEX_PROPERTY_SEED", &ok);
    if (!ok) seed = 20240611u;
    std::mt19937 rng(seed);
    QByteArray input;
    const auto add = [&](char kind, const QString& text, const QString& madeBy) {
        input += kind + QByteArray(" ") + text.toUtf8().toHex() + ' ' + madeBy.toUtf8() + '\n';
    };

    // The image sequence function, in both filter modes: fixed hazards, then random ones.
    std::vector<std::pair<QString, QString>> sequenceCases; // filter, first file
    for (const QString& filter : QStringList{"", "\\", "a\\", "'", "\"", "'\"", "\\'", "\n", "\r", "'''", "\"\"\"",
                                  QString(QChar(u'\0')), QString(QChar(0xdc00)), QString::fromUtf8("\U0001F600*.png"),
                                  QString("^img_\\d+\\.tif$")})
        sequenceCases.push_back({filter, "/data/a.png"});
    for (const QString& file : QStringList{"/data/x\\/a.png", "/x\ny/a.png", "/x\r/a.png", "a.png", "", "/q\"uote/a.png",
                                "/\\/a.png", QString("/x") + QChar(u'\0') + "y/a.png", QString("/ends\\\nimport os/a.png")})
        sequenceCases.push_back({"*.png", file});
    for (int i = 0; i < 150; ++i)
        sequenceCases.push_back({hazardText(rng, 8), (rng() % 4 ? "/" : "") + hazardText(rng, 12) + ".png"});
    for (const auto& [filter, file] : sequenceCases)
        for (const bool regex : {false, true})
            add('s', imageSequenceLoadFunctionText({file, "/elsewhere/b.png"}, filter, regex),
                QString("%1 filter (UTF-16) %2, first file %3").arg(regex ? "regex" : "wildcard", utf16Hex(filter),
                                                                    utf16Hex(file)));

    // The raw volume function: every type, both output formats, with and
    // without the channel axis, gap or none, and the axis transfer or none.
    const auto pick = [&rng](std::initializer_list<int> v) { return v.begin()[rng() % v.size()]; };
    for (const ImageType& type : imageTypes())
        for (const QString format : {"DHWC", "HWCD"})
            for (int variant = 0; variant < 8; ++variant) {
                const bool transfer = variant & 4;
                const LoadFunctionParams p{
                    .imgType = type.name, .offset = pick({0, 1, 4096, INT_MAX}),
                    .gap = variant & 1 ? pick({-1, 1, 64, INT_MAX}) : 0, .width = pick({1, 7, 640, INT_MAX}),
                    .height = pick({1, 9, 480, INT_MAX}), .frame = pick({0, 1, 3, INT_MAX}),
                    .littleEndian = bool(pick({0, 1})), .readOrder = pick({0, 1}) ? "C" : "F",
                    .colorOrder = pick({0, 1}) ? "ABCABC" : "AABBCC", .permute = transfer ? "2,0,1" : "0,1,2",
                    .hflip = transfer && pick({0, 1}), .vflip = transfer && pick({0, 1}), .data_format = format,
                    .keep_c_on_gray = bool(variant & 2)};
                add('v', volumeLoadFunctionText(p),
                    QString("%1 %2 keep_c %3 gap %4 permute %5 flips %6%7 %8 %9 LE %10")
                        .arg(p.imgType, p.data_format).arg(p.keep_c_on_gray).arg(p.gap).arg(p.permute)
                        .arg(p.hflip).arg(p.vflip).arg(p.colorOrder, p.readOrder).arg(p.littleEndian));
            }
    EXPECT_EQ(test::runPython(kCompileAll, {}, input), "") << "seed " << seed;
}

} // namespace
