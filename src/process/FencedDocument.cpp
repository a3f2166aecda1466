#include "process/FencedDocument.h"

#include "fence/ChildFence.h"

#include <QFile>

namespace {

const FencedDocument* innermost = nullptr;

} // namespace

FencedDocument::FencedDocument(const QString& program, const QString& fileName)
    : m_program(program),
      m_fileName(QFile::encodeName(fileName).toStdString()),
      m_outer(innermost)
{
    innermost = this;
}

FencedDocument::~FencedDocument()
{
    innermost = m_outer;
}

const FencedDocument* FencedDocument::current()
{
    return innermost;
}

std::unique_ptr<ChildFence> FencedDocument::makeFence() const
{
    return std::make_unique<ChildFence>(InterpreterLocation::known(m_program),
                                        std::vector<std::string>{m_fileName});
}
