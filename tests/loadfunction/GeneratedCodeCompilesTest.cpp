// Every generated text is a valid Python module, whatever the filter and the
// file names hold: all texts are compiled in one interpreter, which also checks
// that the module holds exactly its own statements (nothing of a name or a
// pattern may leak out of its literal or comment and become code).
#include "PythonProcess.h"
#include "toolboxes/importData/loadfunction/ImageSequenceLoadFunction.h"
#include "toolboxes/importData/loadfunction/VolumeLoadFunction.h"
#include "toolboxes/importData/volume/ImageTypes.h"

#include <gtest/gtest.h>

#include <climits>
#include <random>

using namespace torvex;

// One text a line: its kind and the hex of its UTF-8, as a saved file holds it.
// Prints "index: reason" for each text that fails.
static const char* const kCompileAll = R"(
import ast, sys
expected = {
    's': [('Import', None), ('Import', None), ('Import', None),
          ('FunctionDef', '_normalise_to_uint8'), ('FunctionDef', 'load_image_sequence')],
    'v': [('Import', None), ('FunctionDef', 'load_data')],
}
for index, line in enumerate(sys.stdin):
    kind, source = line.split(' ')[0], bytes.fromhex(line.split(' ')[1])
    try:
        tree = compile(source, f'case{index}.py', 'exec', ast.PyCF_ONLY_AST, dont_inherit=True)
        compile(tree, f'case{index}.py', 'exec', dont_inherit=True)
        body = [(type(n).__name__, getattr(n, 'name', None)) for n in tree.body]
        if body != expected[kind]:
            print(f'{index}: module statements {body}')
    except Exception as e:
        print(f'{index}: {type(e).__name__}: {e}'.replace('\n', ' '))
)";

// A text made of the pieces that upset literals, comments and source files.
static QString hazardText(std::mt19937& rng, int maxPieces)
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
    const unsigned seed = qEnvironmentVariableIntValue("TORVEX_PROPERTY_SEED", &ok);
    std::mt19937 rng(ok ? seed : 20240611u);
    QByteArray input;
    QStringList descriptions; // as hex of UTF-16, so that control characters and lone surrogates show
    const auto add = [&](char kind, const QString& text, const QString& description) {
        input += kind + QByteArray(" ") + text.toUtf8().toHex() + '\n'; // UTF-8, as the function dialog saves it
        descriptions << description;
    };
    const auto utf16 = [](const QString& s) { return QByteArray::fromRawData((const char*)s.utf16(), s.size() * 2).toHex(); };

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
                QString("%1 filter %2, first file %3").arg(regex ? "regex" : "wildcard", utf16(filter), utf16(file)));

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

    const PythonRun run = runPython({"-c", kCompileAll}, input);
    ASSERT_EQ(run.exitCode, 0) << run.err.toStdString();
    int reported = 0;
    for (const QByteArray& line : run.out.split('\n'))
        if (!line.isEmpty() && ++reported <= 10)
            ADD_FAILURE() << "seed " << (ok ? seed : 20240611u) << ", "
                          << descriptions.at(line.left(line.indexOf(':')).toInt()).toStdString() << "\n  "
                          << line.toStdString();
}
