#include "support/OtherLocale.h"

#include <QtGlobal>

#if QT_VERSION < QT_VERSION_CHECK(6, 0, 0)

#include <QTextCodec>

struct OtherLocale::Before
{
    QTextCodec* codec = QTextCodec::codecForLocale();
};

OtherLocale::OtherLocale() : m_before(std::make_unique<Before>())
{
    QTextCodec::setCodecForLocale(QTextCodec::codecForName("ISO 8859-5"));
}

OtherLocale::~OtherLocale()
{
    QTextCodec::setCodecForLocale(m_before->codec);
}

#else

#include <clocale>
#include <string>

// Qt 6 has no codec that could be set, and asks the C library alone.
struct OtherLocale::Before
{
    std::string name = std::setlocale(LC_CTYPE, nullptr);
};

OtherLocale::OtherLocale() : m_before(std::make_unique<Before>())
{
    std::setlocale(LC_CTYPE, "C");
}

OtherLocale::~OtherLocale()
{
    std::setlocale(LC_CTYPE, m_before->name.c_str());
}

#endif
