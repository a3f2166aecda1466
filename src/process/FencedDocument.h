#pragma once

#include <QString>

#include <memory>
#include <string>

class ChildFence;

/// A document that may be a trap, and the program that reads it. Each ChildProcess
/// made while this is in scope runs that program inside a fence, from which it
/// can read this file; see ChildFence.
class FencedDocument
{
public:
    /// In place of the one before, if there is one.
    FencedDocument(const QString& program, const QString& fileName);
    ~FencedDocument();

    FencedDocument(const FencedDocument&) = delete;
    FencedDocument& operator=(const FencedDocument&) = delete;

    /// The one in scope; null for none.
    static const FencedDocument* current();

    /// Makes the fence for one run of the program.
    std::unique_ptr<ChildFence> makeFence() const;

private:
    QString m_program;
    std::string m_fileName;
    const FencedDocument* m_outer;
};
