// The generated load functions, run on real files, return what the window
// itself makes of them: a raw file imported by a real window, and a folder of
// images stacked by the window's loader.
#include "PythonProcess.h"
#include "VolumePanel.h"
#include "host/AppContext.h"
#include "toolboxes/importData/ImportData.h"
#include "toolboxes/importData/loadfunction/ImageSequenceLoadFunction.h"
#include "toolboxes/importData/volume/ImageTypes.h"

#include "../support/TempFiles.h"

#include <QDir>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>
#include <QStatusBar>

#include <gtest/gtest.h>

#include <random>

namespace torvex {
namespace {

// Cases for check_against_saved_arrays.py: a generated module, the input to
// run it on and the array that the window made of that input. All cases run
// in one interpreter, since starting one costs more than a case.
class SavedArrayCases {
public:
    QString path(const QString& name) const { return dir_.filePath(name); }

    void add(const QString& label, const QString& functionText, const QString& function, const QString& input,
             const NdArray& expected)
    {
        const QString stem = path(QString("case%1").arg(cases_.size()));
        test::writeFile(stem + ".py", functionText.toUtf8());
        saveNpy(expected, stem + ".npy");
        cases_.append(QJsonObject{{"label", label}, {"module", stem + ".py"}, {"function", function},
                                  {"argument", input}, {"expected", stem + ".npy"}});
    }

    // The report of the cases that differ; empty when all match.
    std::string failures() const
    {
        test::writeFile(path("cases.json"), QJsonDocument(cases_).toJson());
        const PythonRun run = runPython({loadFunctionTestDir() + "/check_against_saved_arrays.py", path("cases.json")});
        return run.exitCode == 0 ? std::string() : run.err.toStdString();
    }

private:
    QTemporaryDir dir_;
    QJsonArray cases_;
};

// Five layouts per type: gap 0 and not, both byte orders and colour orders,
// each kind of flip after a permutation, both output formats with and without
// the single channel axis, and one frame, where the gap plays no part. Frames,
// rows and columns differ in number, so that a swapped axis shows. Only
// row-major reads agree with the window, but the bitmap is row-major under
// either read order.
std::vector<LoadFunctionParams> layoutsOf(const QString& type)
{
    const QString columnMajorIfBitmap = type == "1-bit Bitmap" ? "F" : "C";
    return {
        {.imgType = type, .offset = 3, .width = 8, .height = 3, .frame = 2, .readOrder = "C",
         .colorOrder = "ABCABC", .keep_c_on_gray = true},
        {.imgType = type, .offset = 3, .gap = 5, .width = 8, .height = 3, .frame = 2, .littleEndian = true,
         .readOrder = "C", .colorOrder = "ABCABC", .permute = "1,2,0", .hflip = true},
        {.imgType = type, .width = 8, .height = 3, .frame = 2, .littleEndian = true, .readOrder = columnMajorIfBitmap,
         .colorOrder = "AABBCC", .permute = "2,0,1", .vflip = true, .data_format = "HWCD"},
        {.imgType = type, .offset = 3, .gap = 5, .width = 8, .height = 3, .frame = 2, .readOrder = columnMajorIfBitmap,
         .colorOrder = "AABBCC", .permute = "0,2,1", .hflip = true, .vflip = true, .data_format = "HWCD",
         .keep_c_on_gray = true},
        {.imgType = type, .offset = 2, .gap = 7, .width = 8, .height = 3, .frame = 1, .littleEndian = true,
         .readOrder = "C", .colorOrder = "ABCABC", .permute = "1,0,2", .hflip = true, .data_format = "HWCD"},
    };
}

// Random bytes, exactly as many as the layout needs: no gap behind the last frame.
QByteArray rawFileFor(const LoadFunctionParams& p, unsigned seed)
{
    const auto frameBytes = static_cast<qsizetype>(p.width * p.height * findImageType(p.imgType)->balanceBytesPerPixel());
    QByteArray bytes(p.offset + (p.frame - 1) * (frameBytes + p.gap) + frameBytes, Qt::Uninitialized);
    std::mt19937 random(seed);
    for (char& b : bytes) b = static_cast<char>(random());
    return bytes;
}

// What a user gets in the workspace after opening the file and setting the panel to p.
std::optional<NdArray> importedByWindow(ImportData& w, AppContext& context, const QString& file,
                                        const LoadFunctionParams& p)
{
    w.openFile(file);
    test::setVolumePanel(w, p);
    w.onImport();
    const QListWidgetItem* entry = w.ui->listWidget_data->currentItem();
    if (!entry) return std::nullopt;
    const auto& workspace = context.get_component("workspace_manager")->get_workspace_data();
    const auto found = workspace.find(entry->text());
    if (found == workspace.end()) return std::nullopt;
    return found->second;
}

std::vector<std::string> imageTypeNames()
{
    std::vector<std::string> names;
    for (const ImageType& type : imageTypes()) names.push_back(type.name.toStdString());
    return names;
}

class GeneratedLoadDataAgainstTheWindow : public testing::TestWithParam<std::string> {};

TEST_P(GeneratedLoadDataAgainstTheWindow, ReturnsWhatTheWindowImportsFromTheSameFile)
{
    AppContext context;
    ImportData w(nullptr, &context);
    SavedArrayCases cases;
    const std::vector<LoadFunctionParams> layouts = layoutsOf(QString::fromStdString(GetParam()));
    for (unsigned i = 0; i < layouts.size(); ++i) {
        const QString raw = test::writeFile(cases.path(QString("volume%1.raw").arg(i)), rawFileFor(layouts[i], i));
        const std::optional<NdArray> imported = importedByWindow(w, context, raw, layouts[i]);
        ASSERT_TRUE(imported) << "layout " << i << ": " << w.ui->statusbar->currentMessage().toStdString();
        cases.add(QString("layout %1").arg(i), w._gen_function(layouts[i]), "load_data", raw, *imported);
    }
    EXPECT_EQ(cases.failures(), "");
}

INSTANTIATE_TEST_SUITE_P(EveryImageType, GeneratedLoadDataAgainstTheWindow, testing::ValuesIn(imageTypeNames()),
                         [](const testing::TestParamInfo<std::string>& info) {
                             QString name = QString::fromStdString(info.param);
                             return name.replace(QRegularExpression("\\W"), "_").toStdString();
                         });

NdArray stackedByLoader(const QStringList& files)
{
    _ImageLoaderWorker worker(1, files);
    std::optional<NdArray> stack;
    QObject::connect(&worker, &_ImageLoaderWorker::finished, [&](int, const NdArray& s) { stack = s; });
    QObject::connect(&worker, &_ImageLoaderWorker::error,
                     [](int, const QString& message) { ADD_FAILURE() << message.toStdString(); });
    worker.run();
    return stack.value_or(NdArray());
}

// The two rules agree on images of 8 bits or fewer; deeper ones are stretched
// in other precisions, so they may round apart.
TEST(GeneratedLoadImageSequence, ReturnsWhatTheWindowsLoaderStacks)
{
    SavedArrayCases cases;
    // Each size differs from the largest by an odd number somewhere, so that
    // the odd row or column of padding shows on which side it goes.
    test::runPython(R"(
import os, sys
import numpy as np
from PIL import Image
rng = np.random.default_rng(7)
def pixels(*shape):
    return rng.integers(0, 256, shape, dtype=np.uint8)
def palette(h, w):
    image = Image.frombytes("P", (w, h), pixels(h, w).tobytes())
    image.putpalette(list(range(256)) * 3)
    return image
mixed, gray = sys.argv[1:]
os.makedirs(mixed)
os.makedirs(gray)
Image.fromarray(pixels(3, 5)).save(f"{mixed}/a.png")
Image.fromarray(pixels(6, 4, 3)).save(f"{mixed}/b.png")
Image.fromarray(pixels(5, 7, 4)).save(f"{mixed}/c.png")
Image.fromarray(pixels(2, 2) > 127).save(f"{mixed}/d.png")
open(f"{mixed}/notes.txt", "w").write("not an image, and filtered out")
Image.fromarray(pixels(3, 5)).save(f"{gray}/a.png")
Image.fromarray(pixels(4, 2)).save(f"{gray}/b.png")
Image.fromarray(pixels(2, 6) > 127).save(f"{gray}/c.png")
palette(5, 3).save(f"{gray}/d.png")
)",
                    {cases.path("mixed"), cases.path("gray")});
    for (const QString folder : {"mixed", "gray"}) {
        QStringList files;
        for (const QString& name : QDir(cases.path(folder)).entryList({"*.png"}, QDir::Files, QDir::Name))
            files << cases.path(folder) + "/" + name;
        const NdArray stack = stackedByLoader(files);
        // The loader keeps an all-gray sequence in one channel; the generated code always repeats it to three.
        cases.add(folder, imageSequenceLoadFunctionText(files, "*.png", false), "load_image_sequence",
                  cases.path(folder), stack.ndim() == 3 ? NdArray::stack({stack, stack, stack}, 3) : stack);
    }
    EXPECT_EQ(cases.failures(), "");
}

} // namespace
} // namespace torvex
