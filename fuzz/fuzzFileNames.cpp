// The bytes of a file name, as the command line gives them.

#include "Require.h"

#include "files/FileName.h"

#include <QByteArray>

#include <cstddef>
#include <cstdint>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string bytes(data, data + size);
    const QString name = FileName::fromUtf8(bytes);
    const bool isSame = name.toUtf8().toStdString() == bytes;
    require(isSame || name.contains(QChar::ReplacementCharacter),
            "a name that is not UTF-8 stands for no other file");
    require(isSame || name.size() <= static_cast<int>(size),
            "a byte that is not UTF-8 becomes one character");
    return 0;
}
