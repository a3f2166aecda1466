// The format of a file by name and content; the input is the name, a zero byte
// and the content.

#include "Require.h"

#include "formats/FileFormatDatabase.h"
#include "formats/FileFormatInfo.h"
#include "render/pdf/PdfSignature.h"

#include <QBuffer>

#include <algorithm>
#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::uint8_t* nameEnd = std::find(data, data + size, 0);
    const auto nameSize = static_cast<int>(nameEnd - data);
    const QByteArray input(reinterpret_cast<const char*>(data), static_cast<int>(size));
    const QString name = QString::fromUtf8(input.left(nameSize));
    QByteArray content = input.mid(nameSize + 1);

    QBuffer device(&content);
    require(device.open(QIODevice::ReadOnly), "a buffer opens");
    const FileFormat byContent = FileFormatDatabase::formatFromContent(&device);
    require(device.pos() == 0, "looking at the content consumes nothing");

    const FileFormat byName = FileFormatDatabase::formatFromFileName(name);
    const FileFormat format = FileFormatDatabase::formatFromFileNameAndContent(name, &device);
    require(format == (byName == FileFormat::Unknown ? byContent : byName),
            "the name goes before the content");
    require(FileFormatDatabase::formatFromName(FileFormatInfo(format).formatName()) == format,
            "every format has a name of its own");
    PdfSignature::isPdfStart(content);
    return 0;
}
