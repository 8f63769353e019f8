// Every generated text is a valid Python module, whatever the filter and the
// file names hold: all texts are compiled in one interpreter, which also checks
// that the module holds exactly its own statements (nothing of a name or a
// pattern may leak out of its literal or comment and become code).
#include "PythonProcess.h"
#include "toolboxes/importData/loadfunction/ImageSequenceLoadFunction.h"
#include "toolboxes/importData/loadfunction/VolumeLoadFunction.h"
#include "toolboxes/importData/volume/ImageTypes.h"

#include <QtEndian>

#include <gtest/gtest.h>

#include <climits>
#include <random>

namespace torvex {
namespace {

// Reads framed texts from stdin (kind byte, 4-byte little-endian length, the
// UTF-8 bytes as a saved file holds them), compiles each as a file would be,
// and prints "index: reason" for each that fails.
const char* const kCompileAll = R"(
import ast, struct, sys
data = sys.stdin.buffer.read()
expected = {
    ord('s'): [('Import', None), ('Import', None), ('Import', None),
               ('FunctionDef', '_normalise_to_uint8'), ('FunctionDef', 'load_image_sequence')],
    ord('v'): [('Import', None), ('FunctionDef', 'load_data')],
}
pos = index = 0
while pos < len(data):
    kind, size = data[pos], struct.unpack_from('<I', data, pos + 1)[0]
    source = data[pos + 5 : pos + 5 + size]
    pos += 5 + size
    try:
        tree = compile(source, f'case{index}.py', 'exec', ast.PyCF_ONLY_AST, dont_inherit=True)
        compile(tree, f'case{index}.py', 'exec', dont_inherit=True)
        body = [(type(n).__name__, getattr(n, 'name', None)) for n in tree.body]
        if body != expected[kind]:
            print(f'{index}: module statements {body}')
    except Exception as e:
        print(f'{index}: {type(e).__name__}: {e}'.replace('\n', ' '))
    index += 1
)";

class Batch {
public:
    void add(char kind, const QString& text, const std::string& description)
    {
        const QByteArray utf8 = text.toUtf8(); // as the function dialog saves it
        char size[4];
        qToLittleEndian<quint32>(static_cast<quint32>(utf8.size()), size);
        input_ += kind;
        input_ += QByteArray(size, 4);
        input_ += utf8;
        descriptions_.push_back(description);
    }

    void expectAllCompile(unsigned seed) const
    {
        const PythonRun run = runPython({"-c", kCompileAll}, input_);
        ASSERT_EQ(run.exitCode, 0) << run.err.toStdString();
        int reported = 0;
        for (const QByteArray& line : run.out.split('\n')) {
            if (line.isEmpty() || ++reported > 10) continue;
            const int index = line.left(line.indexOf(':')).toInt();
            ADD_FAILURE() << "seed " << seed << ", " << descriptions_.at(index) << "\n  " << line.toStdString();
        }
    }

private:
    QByteArray input_;
    std::vector<std::string> descriptions_;
};

// The UTF-16 units of a text in hex, so that control characters and lone
// surrogates show in a failure report.
std::string shown(const QString& text)
{
    std::string out = "\"";
    for (QChar c : text) {
        if (c.unicode() >= 0x20 && c.unicode() < 0x7f && c != u'\\') out += static_cast<char>(c.unicode());
        else out += QString("\\u%1").arg(c.unicode(), 4, 16, QChar('0')).toStdString();
    }
    return out + "\"";
}

// A text made of the pieces that upset literals, comments and source files.
QString hazardText(std::mt19937& rng, int maxPieces)
{
    static const QStringList pieces = {
        "'", "\"", "\\", "\n", "\r", "\r\n", "\t", QString(QChar(u'\0')), "\x7f", QString(QChar(0x85)),
        QString(QChar(0x2028)), QString(QChar(0x2029)), "\x0c", "\x1b", QString::fromUtf8("\u00e9\u00d7"),
        QString::fromUtf8("\U0001F600"), QString(QChar(0xd800)), QString(QChar(0xdc00)), "'''", "\"\"\"", "#",
        "{x}", "*", ".", "?", "[a-z]", "\\x", "\\u", "\\N", " ", "abc", "img_07", ")"};
    QString out;
    const int count = std::uniform_int_distribution<int>(0, maxPieces)(rng);
    for (int i = 0; i < count; ++i) out += pieces[std::uniform_int_distribution<int>(0, pieces.size() - 1)(rng)];
    return out;
}

QStringList hazardFileList(std::mt19937& rng)
{
    QString path = std::uniform_int_distribution<int>(0, 3)(rng) ? "/" : "";
    const int folders = std::uniform_int_distribution<int>(0, 3)(rng);
    for (int i = 0; i < folders; ++i) path += hazardText(rng, 4).remove('/') + "/";
    return {path + hazardText(rng, 3).remove('/') + ".png", "/elsewhere/b.png"};
}

unsigned seedOf()
{
    bool ok = false;
    const unsigned seed = qEnvironmentVariableIntValue("TORVEX_PROPERTY_SEED", &ok);
    return ok ? seed : 20240611u;
}

TEST(GeneratedCodeCompiles, ForAnyFilterAndFileNamesAndEveryVolumeLayout)
{
    const unsigned seed = seedOf();
    std::mt19937 rng(seed);
    Batch batch;

    // The image sequence function, in both filter modes.
    const QStringList fixedFilters = {"", "\\", "a\\", "'", "\"", "'\"", "\\'", "\n", "\r", QString(QChar(u'\0')), "'''",
                                      "\"\"\"", QString(QChar(0xdc00)), QString::fromUtf8("\U0001F600*.png"),
                                      "^img_\\d+\\.tif$"};
    const QStringList fixedFolders = {"/data/x\\/a.png", "/x\ny/a.png", "/x\r/a.png", "a.png", "",
                                      QString("/x") + QChar(u'\0') + "y/a.png", "/q\"uote/a.png", "/\\/a.png",
                                      QString("/ends\\\n") + "import os/a.png"};
    std::vector<std::pair<QString, QStringList>> sequenceCases;
    for (const QString& filter : fixedFilters) sequenceCases.push_back({filter, {"/data/a.png"}});
    for (const QString& folder : fixedFolders) sequenceCases.push_back({"*.png", {folder}});
    for (int i = 0; i < 250; ++i) sequenceCases.push_back({hazardText(rng, 8), hazardFileList(rng)});
    for (const auto& [filter, files] : sequenceCases) {
        for (const bool regex : {false, true}) {
            batch.add('s', imageSequenceLoadFunctionText(files, filter, regex),
                      std::string(regex ? "regex" : "wildcard") + " filter " + shown(filter) + ", first file " +
                          shown(files.first()));
        }
    }

    // The raw volume function: every type, both output formats, with and
    // without the channel axis, gap or none, and the axis transfer or none.
    const auto pick = [&rng](std::initializer_list<int> values) {
        return *(values.begin() + std::uniform_int_distribution<int>(0, int(values.size()) - 1)(rng));
    };
    for (const ImageType& type : imageTypes()) {
        for (const QString format : {"DHWC", "HWCD"}) {
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
                batch.add('v', volumeLoadFunctionText(p),
                          QString("%1 %2 keep_c %3 gap %4 permute %5 flips %6%7 %8 %9 LE %10")
                              .arg(p.imgType, p.data_format).arg(p.keep_c_on_gray).arg(p.gap).arg(p.permute)
                              .arg(p.hflip).arg(p.vflip).arg(p.colorOrder, p.readOrder).arg(p.littleEndian)
                              .toStdString());
            }
        }
    }
    batch.expectAllCompile(seed);
}

} // namespace
} // namespace torvex
