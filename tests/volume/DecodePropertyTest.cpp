// Random raw files and random panel settings, edited one widget at a time as a
// user would: after every edit the window holds a stack of exactly the shape
// the decode rules give, or shows "Error: " and holds none. Nothing else, and
// no crash, whatever the sizes (zero, too large, overflowing).
#include "toolboxes/importData/ImportData.h"
#include "toolboxes/importData/ui/ImportDataForm.h"

#include "../support/TempFiles.h"

#include <QStatusBar>

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <functional>
#include <memory>
#include <optional>
#include <random>
#include <sstream>
#include <vector>

namespace torvex {
namespace {

// The thirteen image types as the decode rules state them.
struct TypeRule {
    const char* name;
    int bits;     // per pixel
    int channels; // of the decoded stack
    DType dtype;
};
constexpr TypeRule kTypes[] = {
    {"8-bit", 8, 1, DType::UInt8},          {"16-bit Signed", 16, 1, DType::Int16},  {"16-bit Unsigned", 16, 1, DType::UInt16},
    {"32-bit Signed", 32, 1, DType::Int32}, {"32-bit Unsigned", 32, 1, DType::UInt32}, {"16-bit Real", 16, 1, DType::Float16},
    {"32-bit Real", 32, 1, DType::Float32}, {"64-bit Real", 64, 1, DType::Float64},  {"24-bit RGB", 24, 3, DType::UInt8},
    {"24-bit BGR", 24, 3, DType::UInt8},    {"32-bit ARGB", 32, 4, DType::UInt8},    {"32-bit ABGR", 32, 4, DType::UInt8},
    {"1-bit Bitmap", 1, 1, DType::UInt8},
};

struct Panel {
    int type = 0;
    int offset = 0, gap = 0, width = 0, height = 0, frames = 0;
    bool littleEndian = false;
    QString order = "F", colorOrder = "AABBCC";
    bool operator==(const Panel&) const = default;
};

std::string describe(const Panel& p, qint64 fileBytes)
{
    std::ostringstream out;
    out << kTypes[p.type].name << " offset " << p.offset << " gap " << p.gap << " width " << p.width << " height "
        << p.height << " frames " << p.frames << (p.littleEndian ? " little" : " big") << "-endian order "
        << p.order.toStdString() << " colour " << p.colorOrder.toStdString() << ", file of " << fileBytes
        << " bytes";
    return out.str();
}

// Bytes of one frame: whole bytes for the bitmap, whose pixels run on across rows.
__int128 frameBytes(const Panel& p)
{
    const __int128 pixels = __int128(p.width) * p.height;
    return kTypes[p.type].bits == 1 ? pixels / 8 : pixels * (kTypes[p.type].bits / 8);
}

// What the panel's values must give for a file of that many bytes: the shape,
// or none for a failure. Exact arithmetic, so no size can overflow here.
std::optional<Shape> expectedShape(const Panel& p, qint64 fileBytes)
{
    const TypeRule& type = kTypes[p.type];
    if (p.frames == 0) return std::nullopt; // nothing to stack
    if (type.bits == 1 && (__int128(p.width) * p.height) % 8 != 0) return std::nullopt; // bits do not fill a frame
    const __int128 needed = __int128(p.offset) + __int128(p.frames - 1) * (frameBytes(p) + p.gap) + frameBytes(p);
    if (needed > fileBytes) return std::nullopt;
    return Shape{p.frames, p.height, p.width, type.channels};
}

class Generator {
public:
    explicit Generator(unsigned seed) : rng_(seed) {}

    int oneOf(std::initializer_list<int> values) { return *(values.begin() + below(static_cast<int>(values.size()))); }
    int below(int n) { return std::uniform_int_distribution<int>(0, n - 1)(rng_); }
    bool chance(int percent) { return below(100) < percent; }

    Panel panel()
    {
        Panel p;
        p.type = below(std::size(kTypes));
        p.width = chance(8) ? 0 : chance(10) ? oneOf({INT_MAX, 1 << 16, 46341}) : 1 + below(12);
        p.height = chance(8) ? 0 : chance(10) ? oneOf({INT_MAX, 1 << 16, 46341}) : 1 + below(12);
        p.frames = chance(12) ? 0 : chance(10) ? oneOf({INT_MAX, 1 << 20}) : 1 + below(5);
        p.offset = chance(10) ? oneOf({INT_MAX, INT_MAX - 1, 1 << 30}) : chance(50) ? 0 : below(40);
        p.gap = chance(10) ? oneOf({INT_MAX, 1 << 30}) : chance(50) ? 0 : below(20);
        p.littleEndian = chance(50);
        p.order = chance(50) ? "F" : "C";
        p.colorOrder = chance(50) ? "ABCABC" : "AABBCC";
        return p;
    }

    // Mostly a length near what the panel needs, so that both outcomes and the
    // edges between them come up; otherwise any small length.
    QByteArray file(const Panel& p)
    {
        __int128 length = below(600);
        if (chance(70)) {
            const __int128 frames = std::max(p.frames, 1);
            length = __int128(p.offset) + (frames - 1) * (frameBytes(p) + p.gap) + frameBytes(p) +
                     oneOf({-1, 0, 0, 0, 1, 7});
        }
        if (length < 0 || length > 1 << 16) length = below(600);
        QByteArray bytes(static_cast<qsizetype>(length), Qt::Uninitialized);
        for (char& b : bytes) b = static_cast<char>(below(256));
        return bytes;
    }

private:
    std::mt19937 rng_;
};

unsigned seedOf()
{
    bool ok = false;
    const unsigned seed = qEnvironmentVariableIntValue("TORVEX_PROPERTY_SEED", &ok);
    return ok ? seed : 715517u;
}

// The panel as the window's widgets hold it now.
Panel panelOf(const ImportData& w)
{
    Panel p;
    const QString name = w.ui->comboBox_imgType->currentText();
    p.type = static_cast<int>(
        std::find_if(std::begin(kTypes), std::end(kTypes), [&](const TypeRule& t) { return name == t.name; }) -
        std::begin(kTypes));
    p.offset = w.ui->spinBox_offset->value();
    p.gap = w.ui->spinBox_gap->value();
    p.width = w.ui->spinBox_width->value();
    p.height = w.ui->spinBox_height->value();
    p.frames = w.ui->spinBox_totalFrame->value();
    p.littleEndian = w.ui->checkBox_littleEndian->isChecked();
    p.order = w.ui->comboBox_order->currentText();
    p.colorOrder = w.ui->comboBox_colorOrder->currentText();
    return p;
}

// Counts of the outcomes met, so that the test shows it meets each of them.
struct Outcomes {
    int stacks = 0, errors = 0, unset = 0;
};

// Checks the window against the rules for its current panel; `before` is the
// stack it held before the edit, which a missing width or height keeps. The
// status is checked only when `reacted`: an edit that changes no value sends no
// signal, and right after opening the status tells of the opening.
void expectRuleHolds(const ImportData& w, qint64 fileBytes, const std::optional<NdArray>& before, bool reacted,
                     Outcomes& met)
{
    const Panel p = panelOf(w);
    ASSERT_LT(p.type, static_cast<int>(std::size(kTypes)));
    SCOPED_TRACE("panel now: " + describe(p, fileBytes));
    const QString status = w.ui->statusbar->currentMessage();
    if (p.width == 0 || p.height == 0) {
        ++met.unset;
        if (reacted) EXPECT_EQ(status.toStdString(), "Set width and height to preview the data");
        EXPECT_EQ(w.prasedData.has_value(), before.has_value());
        if (w.prasedData && before) EXPECT_EQ(w.prasedData->data(), before->data());
        return;
    }
    if (const std::optional<Shape> shape = expectedShape(p, fileBytes)) {
        ++met.stacks;
        ASSERT_TRUE(w.prasedData) << "status: " << status.toStdString();
        EXPECT_EQ(w.prasedData->shape(), *shape);
        EXPECT_EQ(w.prasedData->dtype(), kTypes[p.type].dtype);
        ASSERT_TRUE(w.transferedData);
        EXPECT_EQ(w.transferedData->shape(), *shape); // the default transfer leaves the stack as it is
        EXPECT_EQ(w.transferedData->data(), w.prasedData->data());
        if (reacted) EXPECT_TRUE(status.startsWith("Remaining bytes (unread): ")) << status.toStdString();
    } else {
        ++met.errors;
        EXPECT_FALSE(w.prasedData) << "shape " << ::testing::PrintToString(w.prasedData->shape());
        EXPECT_FALSE(w.transferedData);
        if (reacted) EXPECT_TRUE(status.startsWith("Error: ")) << status.toStdString();
    }
}

TEST(DecodeProperty, EveryEditGivesTheRuledShapeOrAnError)
{
    const unsigned seed = seedOf();
    Generator gen(seed);
    QTemporaryDir dir;
    const QString path = dir.filePath("volume.raw");
    constexpr int kCases = 300;
    std::unique_ptr<ImportData> w;
    Outcomes met;
    for (int c = 0; c < kCases && !::testing::Test::HasFailure(); ++c) {
        if (c % 30 == 0) w = std::make_unique<ImportData>(); // now and then a fresh window
        const Panel target = gen.panel();
        const QByteArray bytes = gen.file(target);
        test::writeFile(path, bytes);
        SCOPED_TRACE("seed " + std::to_string(seed) + ", case " + std::to_string(c) + ": " +
                     describe(target, bytes.size()));

        w->openFile(path);
        ASSERT_TRUE(w->readedBinary);
        EXPECT_EQ(w->ui->statusbar->currentMessage().toStdString(), "File loaded successfully!");
        expectRuleHolds(*w, bytes.size(), std::nullopt, false, met);

        // The nine settings, each one edit, in a random order.
        std::vector<std::function<void()>> edits = {
            [&] { w->ui->comboBox_imgType->setCurrentText(kTypes[target.type].name); },
            [&] { w->ui->spinBox_offset->setValue(target.offset); },
            [&] { w->ui->spinBox_gap->setValue(target.gap); },
            [&] { w->ui->spinBox_width->setValue(target.width); },
            [&] { w->ui->spinBox_height->setValue(target.height); },
            [&] { w->ui->spinBox_totalFrame->setValue(target.frames); },
            [&] { w->ui->checkBox_littleEndian->setChecked(target.littleEndian); },
            [&] { w->ui->comboBox_order->setCurrentText(target.order); },
            [&] { w->ui->comboBox_colorOrder->setCurrentText(target.colorOrder); },
        };
        for (size_t i = edits.size(); i > 1; --i) std::swap(edits[i - 1], edits[gen.below(static_cast<int>(i))]);
        for (const auto& edit : edits) {
            const std::optional<NdArray> before = w->prasedData;
            const Panel panelBefore = panelOf(*w);
            edit();
            expectRuleHolds(*w, bytes.size(), before, panelOf(*w) != panelBefore, met);
            if (::testing::Test::HasFailure()) break;
        }
    }
    const int checks = met.stacks + met.errors + met.unset;
    EXPECT_GT(met.stacks, checks / 20);
    EXPECT_GT(met.errors, checks / 20);
    EXPECT_GT(met.unset, 0);
}

} // namespace
} // namespace torvex
