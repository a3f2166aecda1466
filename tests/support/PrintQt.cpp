#include "support/PrintQt.h"

#include <QByteArray>

#include <ostream>

QT_BEGIN_NAMESPACE

void PrintTo(const QByteArray& value, std::ostream* stream)
{
    *stream << '"' << value.toStdString() << '"';
}

void PrintTo(const QMarginsF& value, std::ostream* stream)
{
    *stream << value.left() << ',' << value.top() << ',' << value.right() << ',' << value.bottom();
}

void PrintTo(const QRect& value, std::ostream* stream)
{
    *stream << '(' << value.left() << ", " << value.top() << ") to (" << value.right() << ", "
            << value.bottom() << ')';
}

void PrintTo(const QSize& value, std::ostream* stream)
{
    *stream << value.width() << " x " << value.height();
}

void PrintTo(const QSizeF& value, std::ostream* stream)
{
    *stream << value.width() << " x " << value.height();
}

void PrintTo(const QString& value, std::ostream* stream)
{
    *stream << '"' << value.toStdString() << '"';
}

QT_END_NAMESPACE
