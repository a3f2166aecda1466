#pragma once

#include <memory>

/// A locale that is not UTF-8, for as long as it lives.
class OtherLocale
{
public:
    OtherLocale();
    ~OtherLocale();

    OtherLocale(const OtherLocale&) = delete;
    OtherLocale& operator=(const OtherLocale&) = delete;

private:
    struct Before;
    std::unique_ptr<Before> m_before;
};
