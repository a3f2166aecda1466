#include "render/html/HtmlDocument.h"

#include "render/decode/PictureDecoder.h"

#include <QBuffer>
#include <QImageReader>
#include <QPixmap>
#include <QUrl>

QVariant HtmlDocument::loadResource(int type, const QUrl& name)
{
    if (type != ImageResource) {
        return QTextDocument::loadResource(type, name);
    }
    // As any other resource the picture comes as bytes.
    QVariant resource = QTextDocument::loadResource(HtmlResource, name);
    QByteArray bytes = resource.toByteArray();
    QBuffer device(&bytes);
    device.open(QIODevice::ReadOnly);
    QImageReader reader(&device);
    QImage image;
    if (!PictureDecoder::read(reader, image)) {
        return resource;
    }
    const QPixmap pixmap = QPixmap::fromImage(image);
    // The bytes have been cached in the meantime, and would be decoded by Qt.
    addResource(ImageResource, name, pixmap);
    return pixmap;
}
