#pragma once

#include <QMarginsF>
#include <QRect>
#include <QSize>
#include <QSizeF>
#include <QString>

#include <iosfwd>

// What GoogleTest shows for Qt values, which it would print as bytes.
QT_BEGIN_NAMESPACE
void PrintTo(const QByteArray& value, std::ostream* stream);
void PrintTo(const QMarginsF& value, std::ostream* stream);
void PrintTo(const QRect& value, std::ostream* stream);
void PrintTo(const QSize& value, std::ostream* stream);
void PrintTo(const QSizeF& value, std::ostream* stream);
void PrintTo(const QString& value, std::ostream* stream);
QT_END_NAMESPACE
