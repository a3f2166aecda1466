#include "process/EnvironmentChange.h"

#include <QtGlobal>

// The bytes of the other variables, and of the old value, stay as they are,
// which QProcessEnvironment would not promise for those that are not text.
EnvironmentChange::EnvironmentChange(const char* name, const QByteArray& value)
    : m_name(name),
      m_valueBefore(qgetenv(name)),
      m_isInForce(qputenv(name, value))
{
}

EnvironmentChange::~EnvironmentChange()
{
    if (m_valueBefore.isNull()) {
        qunsetenv(m_name);
    } else {
        qputenv(m_name, m_valueBefore);
    }
}
