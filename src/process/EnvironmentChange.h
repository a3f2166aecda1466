#pragma once

#include <QByteArray>

/// Gives an environment variable another value for as long as it lives. The
/// children started meanwhile inherit it, together with all others.
class EnvironmentChange
{
public:
    /// `name` has to stay valid.
    EnvironmentChange(const char* name, const QByteArray& value);

    /// Gives the variable its old value again, or removes it if it had none.
    ~EnvironmentChange();

    EnvironmentChange(const EnvironmentChange&) = delete;
    EnvironmentChange& operator=(const EnvironmentChange&) = delete;

    /// False if memory did not suffice and the variable is as it was.
    bool isInForce() const { return m_isInForce; }

private:
    const char* m_name;
    QByteArray m_valueBefore; // null if the variable was not set
    bool m_isInForce;
};
