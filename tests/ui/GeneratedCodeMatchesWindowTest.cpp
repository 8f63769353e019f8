// The generated load functions, run by Python on real files, return what the
// window itself makes of them: a raw file imported by a real window in every
// image type, and folders of images stacked by the window's loader.
#include "../loadfunction/PythonProcess.h"
#include "FunctionDialogSteps.h"
#include "host/AppContext.h"
#include "toolboxes/importData/loadfunction/ImageSequenceLoadFunction.h"
#include "toolboxes/importData/volume/ImageTypes.h"

#include "../support/TempFiles.h"

#include <QDir>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QStatusBar>

#include <gtest/gtest.h>

#include <random>

namespace torvex {
namespace {

// Cases for check_against_saved_arrays.py, all run by one interpreter: a
// generated module, its input and the array the window made of that input.
struct SavedArrayCases {
    QTemporaryDir dir;
    QJsonArray cases;

    void add(const QString& label, const QString& text, const QString& function, const QString& input,
             const NdArray& expected)
    {
        const QString stem = dir.filePath(QString("case%1").arg(cases.size()));
        test::writeFile(stem + ".py", text.toUtf8());
        saveNpy(expected, stem + ".npy");
        cases.append(QJsonObject{{"label", label}, {"module", stem + ".py"}, {"function", function},
                                 {"argument", input}, {"expected", stem + ".npy"}});
    }

    // The report of the cases that differ; empty when all match.
    std::string failures()
    {
        test::writeFile(dir.filePath("cases.json"), QJsonDocument(cases).toJson());
        const QString checker = loadFunctionTestDir() + "/check_against_saved_arrays.py";
        const PythonRun run = runPython({checker, dir.filePath("cases.json")});
        return run.exitCode == 0 ? "" : run.err.toStdString();
    }
};

// Gap 0 and not, both byte and colour orders, each flip after a permutation,
// both output formats with and without the single channel axis, and one frame,
// where the gap plays no part; frames, rows and columns differ in number. Only
// row-major reads agree with the window; the bitmap is row-major under either.
std::vector<LoadFunctionParams> layoutsOf(const QString& type)
{
    const QString columnMajorIfBitmap = type == "1-bit Bitmap" ? "F" : "C";
    return {{.imgType = type, .offset = 3, .width = 8, .height = 3, .frame = 2, .readOrder = "C",
             .colorOrder = "ABCABC", .keep_c_on_gray = true},
            {.imgType = type, .offset = 3, .gap = 5, .width = 8, .height = 3, .frame = 2, .littleEndian = true,
             .readOrder = "C", .colorOrder = "ABCABC", .permute = "1,2,0", .hflip = true},
            {.imgType = type, .width = 8, .height = 3, .frame = 2, .littleEndian = true,
             .readOrder = columnMajorIfBitmap, .colorOrder = "AABBCC", .permute = "2,0,1", .vflip = true,
             .data_format = "HWCD"},
            {.imgType = type, .offset = 3, .gap = 5, .width = 8, .height = 3, .frame = 2,
             .readOrder = columnMajorIfBitmap, .colorOrder = "AABBCC", .permute = "0,2,1", .hflip = true,
             .vflip = true, .data_format = "HWCD", .keep_c_on_gray = true},
            {.imgType = type, .offset = 2, .gap = 7, .width = 8, .height = 3, .frame = 1, .littleEndian = true,
             .readOrder = "C", .colorOrder = "ABCABC", .permute = "1,0,2", .hflip = true, .data_format = "HWCD"}};
}

TEST(GeneratedLoadData, ReturnsWhatTheWindowImportsFromTheSameFileInEveryTypeAndLayout)
{
    AppContext context;
    ImportData w(nullptr, &context);
    SavedArrayCases cases;
    std::mt19937 random(7);
    for (const ImageType& type : imageTypes()) {
        for (const LoadFunctionParams& p : layoutsOf(type.name)) {
            const QString label = QString("%1, layout %2").arg(type.name).arg(cases.cases.size() % 5);
            // Random bytes, as many as the layout needs: no gap behind the last frame.
            const auto frameBytes = static_cast<qsizetype>(p.width * p.height * findImageType(p.imgType)->balanceBytesPerPixel());
            QByteArray bytes(p.offset + (p.frame - 1) * (frameBytes + p.gap) + frameBytes, Qt::Uninitialized);
            for (char& b : bytes) b = static_cast<char>(random());
            const QString raw = test::writeFile(cases.dir.filePath(QString("%1.raw").arg(cases.cases.size())), bytes);
            w.openFile(raw);
            test::setVolumePanel(w, p);
            w.onImport();
            const auto& workspace = context.get_component("workspace_manager")->get_workspace_data();
            const QListWidgetItem* entry = w.ui->listWidget_data->currentItem();
            const auto imported = entry ? workspace.find(entry->text()) : workspace.end();
            ASSERT_NE(imported, workspace.end()) << label.toStdString() << ": "
                                                 << w.ui->statusbar->currentMessage().toStdString();
            // The text as the dialog shows it: every panel widget read into the right field.
            QString shown;
            test::play(w, {test::press("OK", [&](QTextEdit* text) { shown = text->toPlainText(); })});
            cases.add(label, shown, "load_data", raw, imported->second);
        }
    }
    EXPECT_EQ(cases.failures(), "");
}

// The two rules agree on images of 8 bits or fewer; deeper ones are stretched
// in other precisions, so they may round apart.
TEST(GeneratedLoadImageSequence, ReturnsWhatTheWindowsLoaderStacks)
{
    SavedArrayCases cases;
    // Each size differs from the largest by an odd number somewhere: the odd row or column of padding shows.
    test::runPython(R"(
import os, sys
import numpy as np
from PIL import Image
pixels = lambda *shape: np.random.default_rng(sum(shape)).integers(0, 256, shape, dtype=np.uint8)
mixed, gray = sys.argv[1:]
os.makedirs(mixed), os.makedirs(gray)
Image.fromarray(pixels(3, 5)).save(f"{mixed}/a.png")
Image.fromarray(pixels(6, 4, 3)).save(f"{mixed}/b.png")
Image.fromarray(pixels(5, 7, 4)).save(f"{mixed}/c.png")
Image.fromarray(pixels(2, 2) > 127).save(f"{mixed}/d.png")
open(f"{mixed}/notes.txt", "w").write("not an image, and filtered out")
Image.fromarray(pixels(3, 5)).save(f"{gray}/a.png")
Image.fromarray(pixels(4, 2)).save(f"{gray}/b.png")
Image.fromarray(pixels(2, 6) > 127).save(f"{gray}/c.png")
palette = Image.frombytes("P", (3, 5), pixels(5, 3).tobytes())
palette.putpalette(list(range(256)) * 3)
palette.save(f"{gray}/d.png")
)",
                    {cases.dir.filePath("mixed"), cases.dir.filePath("gray")});
    for (const QString folder : {"mixed", "gray"}) {
        const QDir dir(cases.dir.filePath(folder));
        QStringList files;
        for (const QString& name : dir.entryList({"*.png"}, QDir::Files, QDir::Name)) files << dir.filePath(name);
        _ImageLoaderWorker loader(1, files);
        NdArray stack;
        QObject::connect(&loader, &_ImageLoaderWorker::finished, [&](int, const NdArray& s) { stack = s; });
        QObject::connect(&loader, &_ImageLoaderWorker::error, [](int, QString e) { FAIL() << e.toStdString(); });
        loader.run();
        // The loader keeps an all-gray sequence in one channel; the generated code always repeats it to three.
        cases.add(folder, imageSequenceLoadFunctionText(files, "*.png", false), "load_image_sequence", dir.path(),
                  stack.ndim() == 3 ? NdArray::stack({stack, stack, stack}, 3) : stack);
    }
    EXPECT_EQ(cases.failures(), "");
}

} // namespace
} // namespace torvex
