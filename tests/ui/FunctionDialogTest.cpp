// Generate Function in the real window. The generated load functions, run by
// Python on real files, return what the window itself makes of them: a raw file
// imported by a real window in every image type (and what the workspace's Python
// then holds), and folders of images stacked by the window's loader. Then failures that open no dialog, and saving the text
// (failed saves are among the fault injections).
#include "FunctionDialogSteps.h"
#include "host/AppContext.h"
#include "toolboxes/importData/loadfunction/ImageSequenceLoadFunction.h"
#include "toolboxes/importData/loadfunction/PythonText.h"
#include "toolboxes/importData/volume/ImageTypes.h"

#include <QDir>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QStatusBar>

#include <random>

namespace torvex {
namespace {

using namespace test;

// Cases all run by one interpreter: a generated module, its input and the array
// the window made of that input, and optionally that array as the workspace's
// Python saved it. Type, shape and every byte in this machine's byte order must
// match (bytes, so that NaNs compare too).
struct SavedArrayCases {
    QTemporaryDir dir;
    QJsonArray cases;

    QString stem() const { return dir.filePath(QString("case%1").arg(cases.size())); }

    void add(const QString& label, const QString& text, const QString& function, const QString& input,
             const NdArray& expected, bool seenByWorkspace = false)
    {
        writeFile(stem() + ".py", text.toUtf8());
        saveNpy(expected, stem() + ".npy");
        cases.append(QJsonObject{{"label", label}, {"module", stem() + ".py"}, {"function", function},
                                 {"argument", input}, {"expected", stem() + ".npy"},
                                 {"seen", seenByWorkspace ? stem() + ".seen.npy" : ""}});
    }

    // The report of the cases that differ; empty when all match.
    QString failures()
    {
        return runPython(R"(
import json, runpy, sys
import numpy as np
for case in json.loads(sys.stdin.read()):
    try:
        got = [runpy.run_path(case["module"])[case["function"]](case["argument"])]
    except Exception as e:
        print(f"{case['label']}: {e!r}")
        continue
    want = np.load(case["expected"])
    for source, got in zip(("generated", "workspace"), got + ([np.load(case["seen"])] if case["seen"] else [])):
        got = got.astype(got.dtype.newbyteorder("="))
        if got.dtype != want.dtype or got.shape != want.shape or got.tobytes() != want.tobytes():
            print(f"{case['label']} {source}: got {got.dtype}{got.shape}\n{got}\nwant {want.dtype}{want.shape}\n{want}")
)",
                               {}, QJsonDocument(cases).toJson());
    }
};

// Gap 0 and not, all three byte orders, both colour orders, each flip after a permutation,
// both output formats with and without the single channel axis, and one frame,
// where the gap plays no part; frames, rows and columns differ in number. Only
// row-major reads agree with the window; the bitmap is row-major under either.
std::vector<LoadFunctionParams> layoutsOf(const QString& type)
{
    const QString columnMajorIfBitmap = type == "1-bit Bitmap" ? "F" : "C";
    return {{.imgType = type, .offset = 3, .width = 8, .height = 3, .frame = 2, .readOrder = "C",
             .colorOrder = "ABCABC", .keep_c_on_gray = true, .bigEndian = true},
            {.imgType = type, .offset = 3, .gap = 5, .width = 8, .height = 3, .frame = 2, .littleEndian = true,
             .readOrder = "C", .colorOrder = "ABCABC", .permute = "1,2,0", .hflip = true},
            {.imgType = type, .width = 8, .height = 3, .frame = 2, .readOrder = columnMajorIfBitmap,
             .colorOrder = "AABBCC", .permute = "2,0,1", .vflip = true, .data_format = "HWCD", .bigEndian = true},
            {.imgType = type, .offset = 3, .gap = 5, .width = 8, .height = 3, .frame = 2,
             .readOrder = columnMajorIfBitmap, .colorOrder = "AABBCC", .permute = "0,2,1", .hflip = true,
             .vflip = true, .data_format = "HWCD", .keep_c_on_gray = true},
            {.imgType = type, .offset = 2, .gap = 7, .width = 8, .height = 3, .frame = 1, .littleEndian = true,
             .readOrder = "C", .colorOrder = "ABCABC", .permute = "1,0,2", .hflip = true, .data_format = "HWCD"}};
}

// Gray frames repeated to three channels.
NdArray threeChannels(const NdArray& gray)
{
    NdArray rgb = NdArray::empty({gray.extent(0), gray.extent(1), gray.extent(2), 3}, gray.dtype());
    for (int64_t c = 0; c < 3; ++c) rgb.slice(3, c, c + 1).squeeze(3).assignFrom(gray);
    return rgb;
}

TEST(GeneratedLoadData, ReturnsWhatTheWindowImportsFromTheSameFileInEveryTypeAndLayout)
{
    AppContext context;
    ImportData w(nullptr, &context);
    WorkspaceManager& workspace = *context.get_component("workspace_manager");
    SavedArrayCases cases;
    std::mt19937 random(7);
    for (const ImageType& type : imageTypes()) {
        for (const LoadFunctionParams& p : layoutsOf(type.name)) {
            const QString label = QString("%1, layout %2").arg(type.name).arg(cases.cases.size() % 5);
            // Random bytes, as many as the layout needs: no gap behind the last frame.
            const auto frameBytes = static_cast<qsizetype>(p.width * p.height * findImageType(p.imgType)->balanceBytesPerPixel());
            QByteArray bytes(p.offset + (p.frame - 1) * (frameBytes + p.gap) + frameBytes, Qt::Uninitialized);
            for (char& b : bytes) b = static_cast<char>(random());
            const QString raw = writeFile(cases.dir.filePath(QString("%1.raw").arg(cases.cases.size())), bytes);
            w.openFile(raw);
            setVolumePanel(w, p);
            w.onImport();
            const auto& data = workspace.get_workspace_data();
            const QListWidgetItem* entry = w.ui->listWidget_data->currentItem();
            const auto imported = entry ? data.find(entry->text()) : data.end();
            ASSERT_NE(imported, data.end()) << label.toStdString() << ": "
                                                 << w.ui->statusbar->currentMessage().toStdString();
            // The workspace's Python holds the imported memory itself, read-only where the array is.
            const NdArray& array = imported->second;
            EXPECT_EQ(workspace.run_python(QString("np.save(%1, %2)\nprint(%2.ctypes.data, %2.flags.writeable)")
                                               .arg(pythonRepr(cases.stem() + ".seen.npy"), entry->text()))
                          .trimmed(),
                      QString("%1 %2").arg(quintptr(array.data())).arg(array.writeable() ? "True" : "False"))
                << label.toStdString();
            // The text as the dialog shows it: every panel widget read into the right field.
            QString shown;
            play(w, {press("OK", [&](QTextEdit* text) { shown = text->toPlainText(); })});
            cases.add(label, shown, "load_data", raw, array, true);
        }
    }
    EXPECT_EQ(cases.failures(), "");
}

// The two rules agree on images of 8 bits or fewer; deeper ones are stretched
// in other precisions, so they may round apart, but not where levels divide exactly.
TEST(GeneratedLoadImageSequence, ReturnsWhatTheWindowsLoaderStacks)
{
    SavedArrayCases cases;
    // Each size differs from the largest by an odd number somewhere: the odd row or column of padding shows.
    runPython(R"(
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
Image.fromarray(np.array([[0, 1000], [2000, 3000]], np.uint16)).save(f"{mixed}/e.png")
open(f"{mixed}/notes.txt", "w").write("not an image")
Image.fromarray(pixels(3, 5)).save(f"{gray}/a.png")
Image.fromarray(pixels(4, 2)).save(f"{gray}/b.png")
Image.fromarray(pixels(2, 6) > 127).save(f"{gray}/c.png")
palette = Image.frombytes("P", (3, 5), pixels(5, 3).tobytes())
palette.putpalette(list(range(256)) * 3)
palette.save(f"{gray}/d.png")
)",
                    {cases.dir.filePath("mixed"), cases.dir.filePath("gray")});
    // The empty filter's default lets the notes through, to be skipped; a regular expression sees base names.
    for (const auto& [folder, filter, regex, images] :
         {std::tuple{"mixed", "", false, 5}, {"gray", "*.png", false, 4}, {"mixed", "^[ab]\\.", true, 2}}) {
        const QDir dir(cases.dir.filePath(folder));
        QStringList files;
        for (const QString& name : dir.entryList({"*.png"}, QDir::Files, QDir::Name).first(images))
            files << dir.filePath(name);
        _ImageLoaderWorker loader(1, files);
        NdArray stack;
        QObject::connect(&loader, &_ImageLoaderWorker::finished, [&](int, const NdArray& s) { stack = s; });
        QObject::connect(&loader, &_ImageLoaderWorker::error, [](int, QString e) { FAIL() << e.toStdString(); });
        loader.run();
        // The loader keeps an all-gray sequence in one channel; the generated code always repeats it to three.
        cases.add(QString("%1 %2").arg(folder, filter), imageSequenceLoadFunctionText(files, filter, regex),
                  "load_image_sequence", dir.path(),
                  stack.ndim() == 3 ? threeChannels(stack) : stack);
    }
    EXPECT_EQ(cases.failures(), "");
}

TEST(FunctionDialog, FailedGenerationIsReportedAndOpensNoDialog)
{
    ImportData w;
    QStringList boxes;
    auto* type = volumePanelWidget<QComboBox>(w, [](VolumeParams& p) { p.layout.imgType = "?"; });
    type->setEditable(true);
    type->setCurrentText("12-bit Packed");
    play(w, {messageBox(boxes)});
    // An image sequence needs an entry to name its folder.
    w.ui->comboBox_outputType->setCurrentText("Image Sequence");
    play(w, {messageBox(boxes)});
    ASSERT_EQ(boxes.size(), 2);
    EXPECT_EQ(boxes[0], "Error|Failed to generate function: Unsupported image type: 12-bit Packed");
    EXPECT_TRUE(boxes[1].startsWith("Error|Failed to generate function: ")) << boxes[1].toStdString();
}

TEST(FunctionDialog, SavingWritesTheGeneratedTextAsUtf8AndReplacesTheFileEachTime)
{
    ImportData w;
    QTemporaryDir dir;
    const QString target = dir.filePath("load.py");
    w._addDataEntry("data_imgs", "Image Sequence", std::nullopt, QStringList{"/data/shots/a.png"});
    w.ui->comboBox_outputType->setCurrentText("Image Sequence");
    QString generated;
    QStringList boxes;
    // What is saved is the generated text, not what the text box shows. The
    // file is made longer in between, so that a leftover tail would show; a
    // cancelled choice says nothing and keeps the dialog open.
    const auto look = [&](QTextEdit* text) {
        generated = text->toPlainText();
        text->setPlainText("changed on screen");
    };
    const auto lengthen = [&] {
        EXPECT_EQ(readFile(target), generated.toUtf8());
        writeFile(target, QByteArray(10000, 'x'));
    };
    play(w, {press("Save to File", look), saveAs(target), messageBox(boxes, lengthen),
             press("Save to File"), saveAs(target), messageBox(boxes),
             press("Save to File"), cancelSave(), press("OK")});
    EXPECT_EQ(boxes, QStringList(2, "Success|Function saved successfully."));
    EXPECT_TRUE(generated.contains(QChar(0xD7)));
    EXPECT_EQ(readFile(target), generated.toUtf8());
}

} // namespace
} // namespace torvex
