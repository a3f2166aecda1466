#include "support/SearchPath.h"

#include <QFile>
#include <QtGlobal>

namespace {

const char* const variable = "PATH";

} // namespace

SearchPath::SearchPath(const QByteArray& folders) : m_original(qgetenv(variable))
{
    qputenv(variable, folders);
}

SearchPath::~SearchPath()
{
    qputenv(variable, m_original);
}

QByteArray SearchPath::withFirst(const QString& folder)
{
    return QFile::encodeName(folder) + ':' + qgetenv(variable);
}
