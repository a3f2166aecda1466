#pragma once

#include <QtGlobal>

QT_BEGIN_NAMESPACE
/// Exported by Qt, declared in no public header.
Q_GUI_EXPORT int qt_defaultDpi();
QT_END_NAMESPACE
