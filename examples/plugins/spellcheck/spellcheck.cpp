// Checks words against a small bundled word list (words-en.txt, words-de.txt) and
// underlines in every open document the words that the list does not know. Declares
// two command-line arguments: "spell-language <language>" picks the list, the switch
// "spell-skip-acronyms" leaves words written in capitals alone.

#include "../published.h"
#include "../workbench.h"

#include <zelvane/iplugin.h>

#include <QtCore/QFile>
#include <QtCore/QList>
#include <QtCore/QMetaObject>
#include <QtCore/QPointer>
#include <QtCore/QRegularExpression>
#include <QtCore/QSet>
#include <QtCore/QStringList>
#include <QtCore/QtDebug>
#include <QtGui/QAction>
#include <QtGui/QSyntaxHighlighter>
#include <QtWidgets/QPlainTextEdit>

namespace {

// The bundled word list of the language, lower case; empty for a language without one.
QSet<QString> wordList(const QString& language)
{
    QFile file(QStringLiteral(":/spellcheck/words-%1.txt").arg(language));
    if (language.isEmpty() || !file.open(QIODevice::ReadOnly))
        return {};
    QSet<QString> words;
    const QStringList lines = QString::fromUtf8(file.readAll()).split(QLatin1Char('\n'));
    for (const QString& line : lines) {
        if (!line.trimmed().isEmpty())
            words.insert(line.trimmed());
    }
    return words;
}

bool isAcronym(const QString& word)
{
    return word.size() > 1 && word == word.toUpper();
}

// Runs of letters, the same words that the Documents plugin counts.
const QRegularExpression& wordPattern()
{
    static const QRegularExpression pattern(QStringLiteral("\\p{L}+"));
    return pattern;
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
        , m_words(wordList(language))
        , m_skipAcronyms(skipAcronyms)
    {
        setObjectName(QStringLiteral("spellChecker"));
    }

    QString language() const { return m_language; }

    bool isKnown(const QString& word) const
    {
        return (m_skipAcronyms && isAcronym(word)) || m_words.contains(word.toLower());
    }

    // The words of the document that the word list does not know, in text order.
    Q_INVOKABLE QStringList check(const QString& title) const
    {
        QStringList words;
        if (m_documents)
            QMetaObject::invokeMethod(m_documents, "words", Q_RETURN_ARG(QStringList, words),
                                      Q_ARG(QString, title));
        QStringList unknown;
        for (const QString& word : std::as_const(words)) {
            if (!isKnown(word))
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

// Underlines the unknown words of one document, block by block as the user types.
class SpellHighlighter : public QSyntaxHighlighter
{
    Q_OBJECT

public:
    SpellHighlighter(const SpellChecker* checker, QTextDocument* document)
        : QSyntaxHighlighter(document)
        , m_checker(checker)
    {
        m_format.setUnderlineStyle(QTextCharFormat::WaveUnderline);
        m_format.setUnderlineColor(QColor(0xd0, 0x31, 0x2d));
    }

    void setActive(bool active)
    {
        m_active = active;
        rehighlight();
    }

protected:
    void highlightBlock(const QString& text) override
    {
        if (!m_active)
            return;
        QRegularExpressionMatchIterator words = wordPattern().globalMatch(text);
        while (words.hasNext()) {
            const QRegularExpressionMatch word = words.next();
            if (!m_checker->isKnown(word.captured()))
                setFormat(int(word.capturedStart()), int(word.capturedLength()), m_format);
        }
    }

private:
    const SpellChecker* m_checker;
    QTextCharFormat m_format;
    bool m_active = true;
};

class SpellcheckPlugin : public Zelvane::IPlugin
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID ZELVANE_EXAMPLE_IID FILE "spellcheck.json")

public:
    ~SpellcheckPlugin() override
    {
        // The documents belong to the core plugin, which stays loaded a little longer:
        // take this plugin's highlighters off them while their code is still here.
        qDeleteAll(m_highlighters);
        qInfo("Spellcheck: unloaded");
    }

    bool initialize(const QMap<QString, QString>& arguments, QString* errorString) override
    {
        // The map holds every argument the host was given; take the ones declared in
        // spellcheck.json. A switch counts by its presence.
        const QString language
            = arguments.value(QStringLiteral("spell-language"), QStringLiteral("en"));
        const bool skipAcronyms = arguments.contains(QStringLiteral("spell-skip-acronyms"));
        if (wordList(language).isEmpty()) {
            *errorString
                = tr("no dictionary for the language \"%1\" (there are en and de)").arg(language);
            return false;
        }
        QObject* documents = Editor::findPublished(QStringLiteral("documents"));
        if (!documents) {
            *errorString = tr("the document manager was not published");
            return false;
        }
        m_checker = new SpellChecker(documents, language, skipAcronyms, this);
        Editor::publish(m_checker);
        QObject* published = Editor::findPublished(QStringLiteral("workbench"));
        if (published)
            QMetaObject::invokeMethod(published, "addCommand",
                                      Q_ARG(QString, tr("Check spelling")));
        if (auto* workbench = qobject_cast<Editor::IWorkbench*>(published))
            addToWorkbench(workbench, language);
        qInfo("Spellcheck: initialised");
        return true;
    }

private:
    void addToWorkbench(Editor::IWorkbench* workbench, const QString& language)
    {
        if (!workbench->window())
            return;
        auto* underline = new QAction(tr("Underline &Unknown Words (%1)").arg(language), this);
        underline->setObjectName(QStringLiteral("underlineUnknownWords"));
        underline->setCheckable(true);
        underline->setChecked(true);
        connect(underline, &QAction::toggled, this, [this](bool on) {
            for (SpellHighlighter* highlighter : std::as_const(m_highlighters)) {
                if (highlighter)
                    highlighter->setActive(on);
            }
        });
        workbench->addAction(Editor::Menu::Tools, underline);

        Editor::forEachPublished<QPlainTextEdit>(this, [this, underline](QPlainTextEdit* editor) {
            // The highlighter goes with its document when a tab is closed.
            auto* highlighter = new SpellHighlighter(m_checker, editor->document());
            if (!underline->isChecked())
                highlighter->setActive(false);
            m_highlighters.append(highlighter);
        });
    }

    SpellChecker* m_checker = nullptr;
    QList<QPointer<SpellHighlighter>> m_highlighters;
};

#include "spellcheck.moc"
