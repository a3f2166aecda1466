#include "qt/Platform.h"

#include <QFont>
#include <QGuiApplication>
#include <QImageReader>

namespace {

constexpr int defaultPointSize = 12;

} // namespace

// Names of files are UTF-8 on every Unix.
void Platform::prepare()
{
    // The screen of the offscreen platform has 96 dots per inch. That any other
    // number would have the pages drawn at a scale is switched off.
    qputenv("QT_FONT_DPI", "100");
    qputenv("QT_ENABLE_HIGHDPI_SCALING", "0");
    // Qt 5 has no such limit, and the memory of the machine is one.
    QImageReader::setAllocationLimit(0);
}

void Platform::complete()
{
    QFont font = QGuiApplication::font();
    font.setPointSize(defaultPointSize);
    QGuiApplication::setFont(font);
}
