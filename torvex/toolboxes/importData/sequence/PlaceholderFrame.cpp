#include "PlaceholderFrame.h"

#include "PlaceholderLayout.h"

#include <QFileInfo>
#include <QFont>
#include <QFontInfo>
#include <QFontMetrics>
#include <QGuiApplication>
#include <QImage>
#include <QPainter>

#include <optional>
#include <stdexcept>

namespace torvex {

namespace {

struct PlaceholderColours {
    QColor background, header, separator, text, ellipsis;
};

const PlaceholderColours& coloursFor(int channels)
{
    static const auto gray = [](int v) { return QColor(v, v, v); };
    static const PlaceholderColours oneChannel{gray(18), gray(200), gray(80), gray(180), gray(120)};
    static const PlaceholderColours tinted{QColor(18, 18, 30), QColor(255, 200, 60), QColor(80, 80, 100),
                                           QColor(200, 210, 220), QColor(120, 120, 140)};
    return channels == 1 ? oneChannel : tinted;
}

// A monospace font at 11 pixels, else the default font in its default size.
// Fonts need a GUI application; without one no text is drawn.
std::optional<QFont> placeholderFont()
{
    if (!qobject_cast<QGuiApplication*>(QCoreApplication::instance())) return std::nullopt;
    QFont font(QStringLiteral("DejaVu Sans Mono"));
    font.setStyleHint(QFont::Monospace);
    font.setPixelSize(11);
    if (QFontInfo(font).pixelSize() != 11) return QFont();
    return font;
}

struct CharacterCell {
    int width = 7;
    int lineHeight = 13;
};

// Wrapping counts characters, so one measure of "W" decides the line length.
CharacterCell measure(const std::optional<QFont>& font)
{
    if (!font) return {};
    const QRect box = QFontMetrics(*font).tightBoundingRect(QStringLiteral("W"));
    if (box.isEmpty()) return {};
    return {box.width(), box.height() + 4};
}

QString firstChars(const QString& text, int count)
{
    const QList<uint> codePoints = text.toUcs4();
    return QString::fromUcs4(reinterpret_cast<const char32_t*>(codePoints.constData()),
                             std::min<qsizetype>(codePoints.size(), count));
}

} // namespace

NdArray renderPlaceholderFrame(const QString& path, int64_t width, int64_t height, int channels,
                               const std::function<NdArray(const Shape&)>& makeCanvas)
{
    NdArray canvas = makeCanvas(channels == 1 ? Shape{height, width} : Shape{height, width, 3});
    // Painting straight into the array's storage saves copying the frame.
    QImage image(reinterpret_cast<uchar*>(canvas.mutableData()), static_cast<int>(width), static_cast<int>(height),
                 static_cast<qsizetype>(width) * (channels == 1 ? 1 : 3),
                 channels == 1 ? QImage::Format_Grayscale8 : QImage::Format_RGB888);
    if (image.isNull()) throw std::runtime_error("cannot draw a placeholder frame of this size");
    const PlaceholderColours& colours = coloursFor(channels);
    image.fill(colours.background);

    const std::optional<QFont> font = placeholderFont();
    const CharacterCell cell = measure(font);
    const PlaceholderGeometry geometry = placeholderGeometry(width, height, cell.width, cell.lineHeight);
    const QStringList content = placeholderContentLines(path, geometry.maxCharsPerLine);
    const ShownContent shown = shownContent(static_cast<int>(content.size()), geometry.maxLines);

    QPainter painter(&image);
    const int ascent = font ? QFontMetrics(*font).ascent() : 0;
    const auto drawLine = [&](int y, const QColor& colour, const QString& text) {
        if (!font) return;
        painter.setPen(colour);
        painter.drawText(QPoint(4, y + ascent), text);
    };
    if (font) painter.setFont(*font);

    int y = 4;
    drawLine(y, colours.header, firstChars(QFileInfo(path).fileName(), geometry.maxCharsPerLine));
    y += cell.lineHeight + 2;
    painter.setPen(QPen(colours.separator, 1));
    painter.drawLine(4, y, static_cast<int>(width) - 4, y);
    y += 3;
    for (int i = 0; i < shown.lineCount; ++i, y += cell.lineHeight) drawLine(y, colours.text, content[i]);
    if (shown.ellipsis) drawLine(y, colours.ellipsis, QStringLiteral("…"));
    return canvas;
}

} // namespace torvex
