#include "toolboxes/importData/loadfunction/VolumeLoadFunction.h"

#include "toolboxes/importData/volume/ImageTypes.h"

#include <QStringList>

#include <stdexcept>

namespace torvex {

namespace {

// The generated text is a file format: rows joined by one line feed, none
// after the last row, so a trailing empty row means a trailing line feed.
QString rows(const QStringList& lines)
{
    return lines.join(u'\n');
}

QString pythonBool(bool value)
{
    return value ? "True" : "False";
}

// Every body checks the file's size before it reads a byte.
QStringList fileTooSmallCheck(const QString& neededVariable)
{
    return {
        "    if _file_size < " + neededVariable + ":",
        "        raise ValueError(f\"File too small: need {" + neededVariable + "} bytes, got {_file_size}\")",
    };
}

// Size arithmetic of frames that lie bytesPerPixel * width * height apart
// plus a gap; no gap is needed behind the last frame.
QStringList frameStrideRows(int bytesPerPixel)
{
    return QStringList{
               "    _frame_bytes = width * height * " + QString::number(bytesPerPixel),
               "    _stride      = _frame_bytes + gap",
               "    _file_size   = _os.path.getsize(file_name)",
               "    _needed      = offset + (frame - 1) * _stride + _frame_bytes",
           }
        + fileTooSmallCheck("_needed");
}

// Slices each frame from one mapping; the mapping goes before the stack is built.
QStringList stackFramesOneByOne(const QStringList& chunkRows)
{
    return QStringList{
               "    _mm     = np.memmap(file_name, dtype=np.uint8, mode=\"r\")",
               "    _chunks = []",
               "    for _i in range(frame):",
               "        _s = offset + _i * _stride",
               "        _chunks.append(",
           }
        + chunkRows
        + QStringList{
            "        )",
            "    del _mm",
            "    prasedData = np.stack(_chunks, axis=0)",
        };
}

QString grayLoadBody(const ImageType& type, const LoadFunctionParams& p)
{
    const QString bpp = QString::number(type.bytesPerPixel());
    // 8-bit gets the suffix too: the generated text treats all gray types alike.
    const QString byteOrder = p.byteOrder() == ByteOrder::Big      ? ".newbyteorder('>')"
                              : p.byteOrder() == ByteOrder::Little ? ".newbyteorder('<')"
                                                                   : "";
    const QString dtypeExpr = "np.dtype(np." + QString::fromStdString(dtypeName(type.dtype)) + ")" + byteOrder;
    if (p.gap == 0) {
        // Without gaps the file maps in one piece and copies out in one read.
        return rows(QStringList{
                        "import os as _os",
                        "    _file_size = _os.path.getsize(file_name)",
                        "    _expected  = offset + frame * height * width * " + bpp,
                    }
                    + fileTooSmallCheck("_expected")
                    + QStringList{
                        "    prasedData = np.memmap(",
                        "        file_name,",
                        "        dtype=" + dtypeExpr + ",",
                        "        mode=\"r\",",
                        "        offset=offset,",
                        "        shape=(frame, height, width, 1),",
                        "        order=readOrder,",
                        "    )",
                        "    prasedData = np.array(prasedData)  # single bulk read into RAM",
                    });
    }
    return rows(QStringList{"import os as _os", "    _dtype       = " + dtypeExpr}
                + frameStrideRows(type.bytesPerPixel())
                + stackFramesOneByOne({
                    "            np.frombuffer(_mm[_s : _s + _frame_bytes], dtype=_dtype).reshape((height, width, 1))",
                }));
}

// Unpacks interleaved pixels: byte k of a pixel is the k-th channel of the
// type's name, counted from the other end for little-endian words.
QString interleavedChannelCode(const QString& colorType, bool littleEndian)
{
    QStringList names;
    QStringList slices;
    for (qsizetype k = 0; k < colorType.size(); ++k) {
        names << colorType.mid(k, 1);
        const qsizetype byte = littleEndian ? colorType.size() - 1 - k : k;
        slices << "_arr[...," + QString::number(byte) + "]";
    }
    return names.join(u',') + " = " + slices.join(u',');
}

// Planes lie in the order the type's name spells; the result wants R, G, B, then A.
QString planarChannelStack(const QString& colorType)
{
    QStringList planes;
    for (QChar channel : QStringView(u"rgba").left(colorType.size())) {
        planes << "_pl[:," + QString::number(colorType.indexOf(channel)) + ",:,:]";
    }
    return "prasedData = np.stack([" + planes.join(", ") + "], axis=-1)";
}

QString colorLoadBody(const ImageType& type, const LoadFunctionParams& p)
{
    const QString colorType = type.colorType;
    const QString nCh = QString::number(type.channels);
    QString reshapeLine;
    QString chCode;
    QString chStack;
    if (p.colorOrder == "ABCABC") {
        reshapeLine = "_arr = np.frombuffer(_raw, dtype=np.uint8).reshape((frame, height, width, " + nCh
                      + "), order=readOrder)";
        chCode = interleavedChannelCode(colorType, p.byteOrder() == ByteOrder::Little);
        chStack = type.channels == 3 ? "prasedData = np.stack([r,g,b], axis=-1)" : "prasedData = np.stack([r,g,b,a], axis=-1)";
    } else {
        reshapeLine = "_pl = (np.frombuffer(_raw, dtype=np.uint8).reshape((frame, " + nCh
                      + ", height * width)).reshape((frame, " + nCh + ", height, width)))";
        chStack = planarChannelStack(colorType);
    }
    const QStringList channelRows{"    " + reshapeLine, "    " + chCode, "    " + chStack};

    if (p.gap == 0) {
        const QString dataEnd = "offset + frame * height * width * " + nCh;
        return rows(QStringList{
                        "import os as _os",
                        "    _file_size = _os.path.getsize(file_name)",
                        "    _expected  = " + dataEnd,
                    }
                    + fileTooSmallCheck("_expected")
                    + QStringList{
                        "    _mm  = np.memmap(file_name, dtype=np.uint8, mode=\"r\")",
                        "    _raw = bytes(_mm[offset : " + dataEnd + "])",
                        "    del _mm",
                    }
                    + channelRows);
    }
    // Joins the frames without their gaps into one byte string first.
    return rows(QStringList{"import os as _os"}
                + frameStrideRows(type.channels)
                + QStringList{
                    "    _mm   = np.memmap(file_name, dtype=np.uint8, mode=\"r\")",
                    "    _raw  = b\"\".join(bytes(_mm[offset + _i * _stride : offset + _i * _stride + _frame_bytes])",
                    "                     for _i in range(frame))",
                    "    del _mm",
                }
                + channelRows);
}

QString bitmapLoadBody(const LoadFunctionParams& p)
{
    if (p.gap == 0) {
        return rows(QStringList{
                        "import os as _os",
                        "    _bytes_per_frame = width * height // 8",
                        "    _file_size = _os.path.getsize(file_name)",
                        "    _expected  = offset + frame * _bytes_per_frame",
                    }
                    + fileTooSmallCheck("_expected")
                    + QStringList{
                        "    _mm  = np.memmap(file_name, dtype=np.uint8, mode=\"r\")",
                        "    _raw = np.frombuffer(_mm[offset : offset + frame * _bytes_per_frame], dtype=np.uint8)",
                        "    del _mm",
                        "    prasedData = np.unpackbits(_raw).reshape((frame, height, width, 1))",
                    });
    }
    return rows(QStringList{
                    "import os as _os",
                    "    _bytes_per_frame = width * height // 8",
                    "    _stride    = _bytes_per_frame + gap",
                    "    _file_size = _os.path.getsize(file_name)",
                    "    _needed    = offset + (frame - 1) * _stride + _bytes_per_frame",
                }
                + fileTooSmallCheck("_needed")
                + stackFramesOneByOne({
                    "            np.unpackbits(np.frombuffer(_mm[_s : _s + _bytes_per_frame], dtype=np.uint8))",
                    "            .reshape((height, width, 1))",
                }));
}

// Nested in load_data; permutes and flips as the window's axis transfer does.
QString imageTransferHelper()
{
    return rows({
        "",
        "    def _imgTransfer(prasedData, permute, hflip, vflip):",
        "        try:",
        "            permute = [int(i) for i in permute.split(\",\")]",
        "            dim = len(prasedData.shape)",
        "            if permute != [0, 1, 2]:",
        "                if dim == 4:",
        "                    prasedData = np.transpose(prasedData, [*permute, 3])",
        "                elif dim == 5:",
        "                    prasedData = np.transpose(prasedData, [*permute, 3, 4])",
        "                else:",
        "                    prasedData = np.transpose(prasedData, permute)",
        "            if hflip:",
        "                prasedData = prasedData[:, :, ::-1, :]  # view, no copy",
        "            if vflip:",
        "                prasedData = prasedData[:, ::-1, :, :]  # view, no copy",
        "            return prasedData",
        "        except Exception as e:",
        "            raise ValueError(f\"Error in image transfer: {str(e)}\")",
        "    ",
    });
}

// Nested in load_data; brings the array to the axis order an import gives.
QString reformatHelper()
{
    return rows({
        "",
        "    def _reformat(prasedData, data_format=\"DHWC\", keep_c_on_gray=False):",
        "        try:",
        "            dims = len(prasedData.shape)",
        "            if data_format == \"HWCD\":",
        "                if dims == 4:",
        "                    prasedData = np.transpose(prasedData, (1, 2, 3, 0))",
        "                elif dims == 5:",
        "                    prasedData = np.transpose(prasedData, (1, 2, 3, 4, 0))",
        "                if not keep_c_on_gray:",
        "                    if prasedData.shape[2] == 1:",
        "                        prasedData = np.squeeze(prasedData, 2)",
        "            elif data_format == \"DHWC\":",
        "                if not keep_c_on_gray:",
        "                    if prasedData.shape[3] == 1:",
        "                        prasedData = np.squeeze(prasedData, 3)",
        "        except Exception as e:",
        "            raise ValueError(f\"Error in reformat: {str(e)}\")",
        "        return prasedData",
        "    ",
    });
}

} // namespace

QString volumeLoadFunctionText(const LoadFunctionParams& p)
{
    const std::optional<ImageType> type = findImageType(p.imgType);
    if (!type) {
        throw std::runtime_error(("Unsupported image type: " + p.imgType).toStdString());
    }

    QString helperFunctions;
    QString transferParams;
    QString transferCall;
    if (p.transfer() != AxisTransfer()) {
        helperFunctions += imageTransferHelper();
        transferCall = "prasedData = _imgTransfer(prasedData, permute, hflip, vflip)";
        transferParams = rows({
            "permute = '" + p.permute + "'",
            "    hflip = " + pythonBool(p.hflip),
            "    vflip = " + pythonBool(p.vflip),
        });
    }
    QString reformatParams;
    QString reformatCall;
    // Only "DHWC" with the channel axis kept is the decoded layout as it is.
    if (p.data_format != "DHWC" || !p.keep_c_on_gray) {
        helperFunctions += reformatHelper();
        reformatCall = "prasedData = _reformat(prasedData, data_format, keep_c_on_gray)";
        reformatParams = rows({
            "data_format = '" + p.data_format + "'",
            "    keep_c_on_gray = " + pythonBool(p.keep_c_on_gray),
        });
    }

    const bool color = type->layout == PixelLayout::Color;
    const QString loadBody = type->layout == PixelLayout::Gray ? grayLoadBody(*type, p)
                             : color                          ? colorLoadBody(*type, p)
                                                              : bitmapLoadBody(p);
    const QString colorOrderLine = color ? "colorOrder  = '" + p.colorOrder + "'" : QString();

    // Empty pieces still leave their row of four blanks behind.
    return rows({
        "import numpy as np",
        "",
        "def load_data(file_name):",
        "    offset      = " + QString::number(p.offset),
        "    gap         = " + QString::number(p.gap),
        "    width       = " + QString::number(p.width),
        "    height      = " + QString::number(p.height),
        "    frame       = " + QString::number(p.frame),
        "    littleEndian= " + pythonBool(p.littleEndian),
        "    readOrder   = \"" + p.readOrder + "\"",
        "    " + colorOrderLine,
        "    " + transferParams,
        "    " + reformatParams,
        "    " + helperFunctions,
        "    " + loadBody,
        "    " + transferCall,
        "    " + reformatCall,
        "    return prasedData",
        "",
    });
}

} // namespace torvex
