#pragma once

#include <QTextDocument>

/// Rich text whose pictures show no leftover memory (see PictureDecoder).
///
/// Qt asks a document for its pictures through a virtual function, and in no
/// other way that this program could answer.
class HtmlDocument final : public QTextDocument
{
protected:
    QVariant loadResource(int type, const QUrl& name) override;
};
