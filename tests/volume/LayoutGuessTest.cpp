// Guessing a headerless file's layout from its name, size and data.
#include "toolboxes/importData/volume/LayoutGuess.h"
#include "toolboxes/importData/volume/NameHints.h"

#include "../support/TempFiles.h"

using namespace torvex;

namespace {

// Frames of a smooth bump that drifts from frame to frame, plus noise, over the
// type's range, as NumPy writes them (astype(...).tofile), behind a header of random bytes.
constexpr const char* kWriteFiles = R"(
import sys, numpy as np
rng = np.random.default_rng(7)
for entry in sys.argv[2:]:
    name, dt, w, h, f, head = entry.split(':'); w, h, f, head = int(w), int(h), int(f), int(head)
    y, x = np.mgrid[0:h, 0:w]
    bump = np.hypot(x - 0.4 * w, y - 0.55 * h); bump = bump / bump.max()
    v = np.stack([0.1 + bump * 0.7 + 0.03 * i for i in range(f)]) + rng.normal(0, 0.002, (f, h, w))
    t = np.dtype(dt)
    lo, hi = (-1.5, 2.5) if t.kind == 'f' else (5, 250) if t.itemsize == 1 else (0, min(np.iinfo(t).max, 4e6)) \
        if t.kind == 'u' else (max(np.iinfo(t).min, -2e6), min(np.iinfo(t).max, 2e6))
    with open(sys.argv[1] + '/' + name, 'wb') as out:
        out.write(rng.integers(0, 256, head, dtype=np.uint8).tobytes())
        (lo + (hi - lo) * v).astype(t).tofile(out)
)";

struct Case {
    const char* file;    // name:dtype:width:height:frames:header bytes
    const char* guessed; // the summary between "Guessed " and " endian, from "
    const char* from = "the file size and the data";
};

TEST(LayoutGuess, FindsTypeOrderAndSizesInDataAndNamesWin)
{
    const char* all = "the file name, the file size and the data";
    const Case cases[] = {
        {"a:u1:96:70:4:0", "8-bit, 96 x 70 x 4, little"},
        {"b:u1:120:90:1:0", "8-bit, 120 x 90 x 1, little"},
        {"c:<u2:128:50:6:0", "16-bit Unsigned, 128 x 50 x 6, little"},
        {"d:>u2:128:50:6:64", "16-bit Unsigned, 128 x 50 x 6 after 64 header bytes, big"},
        {"e:<i2:80:60:3:0", "16-bit Signed, 80 x 60 x 3, little"},
        {"f:>i2:80:60:3:17", "16-bit Signed, 80 x 60 x 3 after 17 header bytes, big"},
        {"g:<u4:64:40:5:100", "32-bit Unsigned, 64 x 40 x 5 after 100 header bytes, little"},
        {"h:>i4:64:40:5:0", "32-bit Signed, 64 x 40 x 5, big"},
        {"i:<f4:100:30:4:0", "32-bit Real, 100 x 30 x 4, little"},
        {"j:>f8:50:40:3:32", "64-bit Real, 50 x 40 x 3 after 32 header bytes, big"},
        {"k:u1:300:200:2:512", "8-bit, 300 x 200 x 2 after 512 header bytes, little"},
        {"l:>f4:128:96:3:10", "32-bit Real, 128 x 96 x 3 after 10 header bytes, big"},
        {"scan_96x70x4_u16_be.raw:>u2:96:70:4:0", "16-bit Unsigned, 96 x 70 x 4, big", "the file name"},
        // The name wins over the data's 100 x 64.
        {"w64_h100_d4.raw:<u2:100:64:4:0", "16-bit Unsigned, 64 x 100 x 4, little", all},
        {"cube_f32.bin:<f4:70:70:3:0", "32-bit Real, 70 x 70 x 3, little", all},
        {"day_2019x01x15.raw:<u2:128:50:6:0", "16-bit Unsigned, 128 x 50 x 6, little"}, // a date, not sizes
    };
    QTemporaryDir dir;
    QStringList entries;
    for (const Case& c : cases) entries << c.file;
    test::runPython(kWriteFiles, QStringList{dir.path()} + entries);
    for (const Case& c : cases) {
        const QString name = QString(c.file).section(':', 0, 0);
        const LayoutGuess guess = guessLayout(name, test::readFile(dir.filePath(name)));
        EXPECT_EQ(guess.layout ? guess.layout->summary() : guess.reason,
                  QString("Guessed %1 endian, from %2").arg(c.guessed, c.from))
            << c.file;
    }
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
        const LayoutGuess guess = guessLayout("data.raw", bytes);
        EXPECT_FALSE(guess.layout) << reason;
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
