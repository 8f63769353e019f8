#include "toolboxes/importData/volume/NdArray.h"

#include "../support/TempFiles.h"

#include <gtest/gtest.h>

#include <numeric>

using namespace torvex;
using Values = std::vector<double>;

// A C-contiguous array holding 0, 1, 2, ... in the given type.
static NdArray iota(const Shape& shape, DType dtype = DType::Int32)
{
    NdArray a = NdArray::empty(shape, DType::Float64);
    auto* p = reinterpret_cast<double*>(a.mutableData());
    std::iota(p, p + a.size(), 0.0);
    return a.astype(dtype);
}

static Values values(const NdArray& a)
{
    Values out;
    a.forEach([&](const std::byte* p) { out.push_back(a.valueAt(p)); });
    return out;
}

static std::string failure(const std::function<void()>& f)
{
    try {
        f();
    } catch (const std::runtime_error& e) {
        return e.what();
    }
    return "";
}

TEST(NdArray, ViewsShareStorageAndWalkInTheirOwnOrder)
{
    const NdArray a = iota({2, 3});
    const NdArray t = a.transpose({1, 0}), f = a.flip(1);
    EXPECT_TRUE(t.sharesStorageWith(a));
    EXPECT_EQ(values(t), (Values{0, 3, 1, 4, 2, 5}));
    EXPECT_EQ(values(f), (Values{2, 1, 0, 5, 4, 3}));
    EXPECT_EQ(values(a.flip(0).flip(1)), (Values{5, 4, 3, 2, 1, 0}));
    EXPECT_EQ(values(a.slice(1, 0, 3, 2)), (Values{0, 2, 3, 5}));
    EXPECT_EQ(values(a.index(1)), (Values{3, 4, 5}));
    EXPECT_EQ(a.expandDims(2).squeeze(2).shape(), a.shape());
    // Reshape reads in C or F order; a view whenever the strides allow.
    const NdArray flat = iota({6});
    EXPECT_EQ(values(flat.reshape({2, 3}, 'F')), (Values{0, 2, 4, 1, 3, 5}));
    EXPECT_TRUE(flat.reshape({2, 3}, 'F').sharesStorageWith(flat));
    EXPECT_EQ(values(t.reshape({6})), (Values{0, 3, 1, 4, 2, 5}));
    EXPECT_EQ(values(f.reshape({3, 2}, 'F')), (Values{2, 4, 5, 0, 1, 3}));
}

TEST(NdArray, CopiesGatherStackPadAndConvert)
{
    const NdArray a = iota({3, 2}, DType::UInt16);
    EXPECT_EQ(values(a.take({2, 0})), (Values{4, 5, 0, 1}));
    EXPECT_EQ(values(NdArray::stack({a.index(0), a.index(2)}, 1)), (Values{0, 4, 1, 5}));
    EXPECT_EQ(values(NdArray::stack({a.flip(0)}, 0)), (Values{4, 5, 2, 3, 0, 1}));
    EXPECT_EQ(values(a.index(0).pad({{1, 2}})), (Values{0, 0, 1, 0, 0}));
    EXPECT_EQ(a.pad({{0, 1}, {1, 0}}).shape(), (Shape{4, 3}));
    EXPECT_EQ(values(NdArray::wrap(QByteArray("\xA0\x01", 2), 0, 2, DType::UInt8).unpackBits()),
              (Values{1, 0, 1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1}));
    // Float to integer truncates toward zero and saturates instead of wrapping.
    NdArray d = NdArray::empty({4}, DType::Float64);
    const double in[] = {2.9, -1.5, 300.0, NAN};
    std::memcpy(d.mutableData(), in, sizeof in);
    EXPECT_EQ(values(d.astype(DType::UInt8)), (Values{2, 0, 255, 0}));
    EXPECT_EQ(values(d.astype(DType::Float16)).front(), 2.900390625);

    EXPECT_EQ(failure([] { NdArray::stack({}, 0); }), "need at least one array to stack");
    EXPECT_EQ(failure([&] { NdArray::stack({a, a.index(0)}, 0); }), "all input arrays must have the same shape");
    EXPECT_EQ(failure([&] { a.reshape({4, 2}); }), "cannot reshape array of size 6 into shape (4,2)");
    EXPECT_EQ(failure([&] { a.transpose({0, 0}); }), "repeated axis in transpose");
    EXPECT_NE(failure([] { NdArray::zeros({1 << 30, 1 << 30, 1 << 30}, DType::UInt8); }), "");
}

TEST(NdArray, ElementTextIsTheShortestThatReadsBack)
{
    const std::tuple<DType, double, const char*> cases[] = {
        {DType::Float32, 0.1, "0.1"},   {DType::Float64, 0.1, "0.1"},   {DType::Float16, 1.0 / 3, "0.3333"},
        {DType::Float32, 1e20, "1e+20"}, {DType::Float64, 2.0, "2.0"},   {DType::Float64, 1e-5, "1e-05"},
        {DType::Int16, -7, "-7"}};
    for (const auto& [dtype, v, text] : cases) {
        NdArray a = NdArray::empty({1}, DType::Float64);
        std::memcpy(a.mutableData(), &v, sizeof v);
        const NdArray b = a.astype(dtype);
        EXPECT_EQ(b.elementText(b.data()), text);
    }
}

TEST(NdArray, SaveNpyWritesWhatNumPyReadsBack)
{
    QTemporaryDir dir;
    // A flipped, transposed view of little-endian half floats read straight from bytes.
    QByteArray bytes;
    for (int i = 0; i < 6; ++i) {
        const Float16 h(static_cast<float>(i) / 4);
        bytes.append(static_cast<char>(h.bits() & 0xff)).append(static_cast<char>(h.bits() >> 8));
    }
    const NdArray view =
        NdArray::wrap(bytes, 0, 12, DType::Float16, ByteOrder::Little).reshape({2, 3}).transpose({1, 0}).flip(0);
    saveNpy(view, dir.filePath("half.npy"));
    saveNpy(iota({2, 1, 3}, DType::UInt32), dir.filePath("u32.npy"));
    const QString out = test::runPython(
        "import numpy, sys\n"
        "a = numpy.load(sys.argv[1]); b = numpy.load(sys.argv[2])\n"
        "print(a.dtype, a.shape, a.ravel().tolist(), b.dtype, b.shape, b.ravel().tolist())",
        {dir.filePath("half.npy"), dir.filePath("u32.npy")});
    EXPECT_EQ(out.toStdString(),
              "float16 (3, 2) [0.5, 1.25, 0.25, 1.0, 0.0, 0.75] uint32 (2, 1, 3) [0, 1, 2, 3, 4, 5]");
    EXPECT_THROW(saveNpy(view, dir.filePath("no/such/folder/x.npy")), std::runtime_error);
}

TEST(NdArray, TakePicksWithoutCopyingAndGathersOnDemand)
{
    const NdArray stack = iota({4, 2, 3});
    const NdArray picked = stack.take({3, 1, 3});
    EXPECT_TRUE(picked.is_picked());
    EXPECT_EQ(picked.shape(), (Shape{3, 2, 3}));
    EXPECT_EQ(picked.index(1).data(), stack.index(1).data()); // no element copied
    const Values want = {18, 19, 20, 21, 22, 23, 6, 7, 8, 9, 10, 11, 18, 19, 20, 21, 22, 23};
    EXPECT_EQ(values(picked), want);
    EXPECT_EQ(values(picked.take({1})), Values(want.begin() + 6, want.begin() + 12));
    // Anything that needs the elements in one block gets them gathered once.
    EXPECT_EQ(values(picked.transpose({1, 0, 2}).index(0)), (Values{18, 19, 20, 6, 7, 8, 18, 19, 20}));
    EXPECT_EQ(picked.data(), picked.data());
    EXPECT_EQ(values(picked.copy()), want);
    EXPECT_EQ(values(NdArray::stack({picked.index(0), picked.index(1)}, 0)), Values(want.begin(), want.begin() + 12));
    EXPECT_THROW(stack.take({4}), std::runtime_error);
}
