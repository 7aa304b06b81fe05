// Checks a document's words against a small built-in dictionary. Declares two
// command-line arguments: "spell-language <language>" and the switch
// "spell-skip-acronyms".

#include "../published.h"

#include <zelvane/iplugin.h>

#include <QtCore/QMetaObject>
#include <QtCore/QPointer>
#include <QtCore/QSet>
#include <QtCore/QStringList>
#include <QtCore/QtDebug>

namespace {

QSet<QString> dictionary(const QString& language)
{
    if (language == QLatin1String("en")) {
        return { "a",  "an",    "and", "but",   "dear",   "draft",   "for", "is",
                 "it", "not",   "of",  "ready", "report", "summary", "the", "this",
                 "to", "today", "was", "we",    "will",   "with" };
    }
    if (language == QLatin1String("de")) {
        return { "aber",   "bericht", "das", "der",   "die", "entwurf",
                 "fertig", "heute",   "ist", "nicht", "und", "zusammenfassung" };
    }
    return {};
}

bool isAcronym(const QString& word)
{
    return word.size() > 1 && word == word.toUpper();
}

} // namespace

class SpellChecker : public QObject
{
    Q_OBJECT
    Q_PROPERTY(QString language READ language CONSTANT)

public:
    SpellChecker(QObject* documents, const QString& language, bool skipAcronyms, QObject* parent)
        : QObject(parent)
        , m_documents(documents)
        , m_language(language)
        , m_words(dictionary(language))
        , m_skipAcronyms(skipAcronyms)
    {
        setObjectName(QStringLiteral("spellChecker"));
    }

    QString language() const { return m_language; }

    // The words of the document that the dictionary does not know, in text order.
    Q_INVOKABLE QStringList check(const QString& title) const
    {
        QStringList words;
        if (m_documents)
            QMetaObject::invokeMethod(m_documents, "words", Q_RETURN_ARG(QStringList, words),
                                      Q_ARG(QString, title));
        QStringList unknown;
        for (const QString& word : std::as_const(words)) {
            if (m_skipAcronyms && isAcronym(word))
                continue;
            if (!m_words.contains(word.toLower()))
                unknown.append(word);
        }
        return unknown;
    }

private:
    QPointer<QObject> m_documents;
    QString m_language;
    QSet<QString> m_words;
    bool m_skipAcronyms;
};

class SpellcheckPlugin : public Zelvane::IPlugin
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID ZELVANE_EXAMPLE_IID FILE "spellcheck.json")

public:
    ~SpellcheckPlugin() override { qInfo("Spellcheck: unloaded"); }

    bool initialize(const QMap<QString, QString>& arguments, QString* errorString) override
    {
        // The map holds every argument the host was given; take the ones declared in
        // spellcheck.json. A switch counts by its presence.
        const QString language
            = arguments.value(QStringLiteral("spell-language"), QStringLiteral("en"));
        const bool skipAcronyms = arguments.contains(QStringLiteral("spell-skip-acronyms"));
        if (dictionary(language).isEmpty()) {
            *errorString
                = tr("no dictionary for the language \"%1\" (there are en and de)").arg(language);
            return false;
        }
        QObject* documents = Editor::findPublished(QStringLiteral("documents"));
        if (!documents) {
            *errorString = tr("the document manager was not published");
            return false;
        }
        Editor::publish(new SpellChecker(documents, language, skipAcronyms, this));
        if (QObject* workbench = Editor::findPublished(QStringLiteral("workbench")))
            QMetaObject::invokeMethod(workbench, "addCommand",
                                      Q_ARG(QString, tr("Check spelling")));
        qInfo("Spellcheck: initialised");
        return true;
    }
};

#include "spellcheck.moc"
