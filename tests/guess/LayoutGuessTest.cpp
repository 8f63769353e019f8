// Guessing a headerless file's layout from its name, size and data.
#include "toolboxes/importData/guess/LayoutGuesses.h"
#include "toolboxes/importData/guess/NameHints.h"

#include "../support/TempFiles.h"

using namespace torvex;

namespace {

// Frames of a gradient with a bump that drifts from frame to frame under
// strong per-pixel noise, or (names starting with "r") plain ramps across
// rows, columns and frames under light noise, or (names starting with "k")
// slices of a disc whose seams show nothing, as NumPy writes them
// (astype(...).tofile), behind a header.
constexpr const char* kWriteFiles = R"(
import sys, numpy as np
rng = np.random.default_rng(7)
for entry in sys.argv[2:]:
    name, dt, w, h, d, head = entry.split(':'); w, h, d, head = int(w), int(h), int(d), int(head)
    z, y, x = np.mgrid[0:d, 0:h, 0:w]
    v = 1000 + 800 * np.exp(-(((x - w / 2 - 20 * np.sin(z / 5)) / (w / 4)) ** 2 + ((y - h / 2) / (h / 5)) ** 2)) \
        + 3 * y + rng.normal(0, 40, (d, h, w))
    if name[0] == 'r': v = 1000 - 1.5 * x + 2 * y + 30 * z + rng.normal(0, 10, (d, h, w))
    if name[0] == 'k':  # a disc with rings and a moving spot, on a flat background
        r = np.hypot(x - w / 2, y - h / 2) / (min(w, h) / 2)
        v = 1000 + np.where(r < 0.85 - 0.1 * z / d, 1000 + 200 * np.cos(12 * r) + 300 * np.exp(-((x - w / 3 - z) ** 2 + (y - h / 2) ** 2) / 400), 0) + rng.normal(0, 20, (d, h, w))
    t = np.dtype(dt)
    v = (v - v.min()) / (v.max() - v.min()) * 255 if t.itemsize == 1 else v - 1000 if t.kind == 'i' else v
    with open(sys.argv[1] + '/' + name, 'wb') as out:
        out.write(rng.integers(0, 256, head, dtype=np.uint8).tobytes())
        v.astype(t).tofile(out)
)";

struct Case {
    const char* file;    // name:dtype:width:height:frames:header bytes
    const char* guessed; // the summary between "Guessed " and " endian, from "
    const char* from = "the file size and the data";
    bool offered = false; // among the alternatives, not necessarily first
};

TEST(LayoutGuess, FindsTypeOrderAndSizesInDataAndNamesWin)
{
    const char* all = "the file name, the file size and the data";
    const Case cases[] = {
        {"a:<u2:512:384:60:0", "16-bit Unsigned, 512 x 384 x 60, little"},
        {"b:>u2:512:384:60:0", "16-bit Unsigned, 512 x 384 x 60, big"},
        {"c:<f4:256:256:10:128", "32-bit Real, 256 x 256 x 10 after 128 header bytes, little"},
        {"d:<u2:1024:1024:8:0", "16-bit Unsigned, 1024 x 1024 x 8, little"},
        {"e:>i4:333:200:30:0", "32-bit Signed, 333 x 200 x 30, big"},
        {"f:<u2:2048:2048:1:0", "16-bit Unsigned, 2048 x 2048 x 1, little"},
        {"g:u1:640:480:5:512", "8-bit, 640 x 480 x 5 after 512 header bytes, little"},
        {"h:>i2:640:480:5:128", "16-bit Signed, 640 x 480 x 5 after 128 header bytes, big"},
        {"i:>f4:640:480:1:512", "32-bit Real, 640 x 480 x 1 after 512 header bytes, big"},
        {"scan_96x70x4_u16_be.raw:>u2:96:70:4:0", "16-bit Unsigned, 96 x 70 x 4, big", "the file name"},
        // The name wins over the data's 100 x 64.
        {"w64_h100_d4.raw:<u2:100:64:4:0", "16-bit Unsigned, 64 x 100 x 4, little", all},
        {"day_2019x01x15.raw:u1:256:256:10:0", "8-bit, 256 x 256 x 10, little"}, // a date, not sizes
        {"r1:<u2:700:500:7:0", "16-bit Unsigned, 700 x 500 x 7, little"},
        {"r2:u1:300:300:20:64", "8-bit, 300 x 300 x 20 after 64 header bytes, little"},
        {"r3:>i4:640:400:5:0", "32-bit Signed, 640 x 400 x 5, big"}, // crossing zero: not two 16-bit halves
        {"r4:<f4:384:256:9:32", "32-bit Real, 384 x 256 x 9 after 32 header bytes, little"},
        // Flat discs under noise: three rows as one look as alike as one; the user picks.
        {"k1:<i2:300:300:24:0", "16-bit Signed, 300 x 300 x 24, little", "the file size and the data", true},
        {"k2:>u2:400:400:10:256", "16-bit Unsigned, 400 x 400 x 10 after 256 header bytes, big"},
        {"r5:<u2:200:300:1:1000", "16-bit Unsigned, 200 x 300 x 1 after 1000 header bytes, little"}, // rows of header
    };
    QTemporaryDir dir;
    QStringList entries;
    for (const Case& c : cases) entries << c.file;
    test::runPython(kWriteFiles, QStringList{dir.path()} + entries);
    for (const Case& c : cases) {
        const QString name = QString(c.file).section(':', 0, 0);
        const LayoutGuesses guess = guessLayouts(name, test::readFile(dir.filePath(name)));
        QStringList guessed{guess.reason};
        for (const LayoutOption& option : guess.best) guessed << option.summary();
        const QString expected = QString("Guessed %1 endian, from %2").arg(c.guessed, c.from);
        EXPECT_EQ(c.offered && guessed.contains(expected) ? expected : guessed.value(guess.best.empty() ? 0 : 1), expected)
            << c.file;
    }
}

TEST(LayoutGuess, SurvivesARowValleyWithAFlatBottom)
{
    // A noise-free ramp nearly straight down the rows, in the float steps of
    // numbers near a million, stored as doubles: the fit through its row
    // valley once bottomed out at a negative row length.
    const float turn = 1.5163674f, top = 3 * (std::cos(turn) + std::sin(turn));
    QByteArray bytes;
    for (int y = 0; y < 64; ++y)
        for (int x = 0; x < 96; ++x) {
            const double value = 1e6f + 3 * (std::cos(turn) * static_cast<float>(x) / 95 +
                                             std::sin(turn) * static_cast<float>(y) / 63) / top;
            bytes.append(reinterpret_cast<const char*>(&value), sizeof value);
        }
    EXPECT_NO_THROW(guessLayouts("ramp.raw", bytes));
}

TEST(LayoutGuess, GivesAReasonForFilesWithoutALayout)
{
    QByteArray noise(200000, '\0');
    for (char& b : noise) b = static_cast<char>(std::rand());
    const std::pair<QByteArray, const char*> cases[] = {
        {"", "the file is empty"},
        {"x", "the file is too small to show a pattern"},
        {noise, "its bytes look like noise under every image type"},
        {QByteArray(4096, '\0'), "its values do not vary under any image type"},
    };
    for (const auto& [bytes, reason] : cases) {
        const LayoutGuesses guess = guessLayouts("data.raw", bytes);
        EXPECT_TRUE(guess.best.empty()) << reason;
        EXPECT_EQ(guess.reason, QString(reason));
    }
}

} // namespace

TEST(NameHints, ReadSizesTypeAndByteOrderAsPeopleWriteThem)
{
    struct Sizes {
        std::optional<int64_t> width, height, frames;
        bool operator==(const Sizes&) const = default;
    };
    const struct {
        const char* name;
        Sizes sizes;
        std::optional<QString> type;
        std::optional<bool> little;
    } cases[] = {
        {"/data/ct_512x384x100_uint16_le.raw", {512, 384, 100}, "16-bit Unsigned", true},
        {"img512x256.f32", {512, 256, {}}, "32-bit Real", {}},
        {"w640_h480_d3_be_8bit.bin", {640, 480, 3}, "8-bit", false},
        {"stack-float64BE.dat", {}, "64-bit Real", false},
        {"run2_i16.raw", {}, "16-bit Signed", {}},
        {"before_after.raw", {}, {}, {}}, // "be" only as a whole word
        {"9999999999x2.raw", {{}, 2, {}}, {}, {}},
    };
    for (const auto& c : cases) {
        const NameHints h = readNameHints(c.name);
        EXPECT_EQ((Sizes{h.width, h.height, h.frames}), c.sizes) << c.name;
        EXPECT_EQ(h.imgType, c.type) << c.name;
        EXPECT_EQ(h.littleEndian, c.little) << c.name;
    }
}
