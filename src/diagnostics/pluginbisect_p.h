#pragma once

// Internal to the Diagnostics component: never installed.

#include <zelvane/diagnostics/pluginbisect.h>

#include <QtCore/QMultiHash>
#include <QtCore/QSet>
#include <QtCore/QString>
#include <QtCore/QStringList>

QT_BEGIN_NAMESPACE
class QSettings;
QT_END_NAMESPACE

namespace Zelvane {

namespace PluginBisectKeys {

// Keys inside the bisect's group. The user's own selection is kept under "selection/"
// with QSettings' own encoding of each value, so that writing it back gives the very
// values, and so the very file, that the user had.
inline const QString stateKey = QStringLiteral("state");
inline const QString orderKey = QStringLiteral("order");
inline const QString needsKey = QStringLiteral("needs");
inline const QString pinnedKey = QStringLiteral("pinned");
inline const QString suspectsKey = QStringLiteral("suspects");
inline const QString keptOffKey = QStringLiteral("keptOff");
inline const QString halfKey = QStringLiteral("half");
inline const QString culpritsKey = QStringLiteral("culprits");
inline const QString restartsKey = QStringLiteral("restarts");
inline const QString maximumKey = QStringLiteral("maximum");
inline const QString selectionGroup = QStringLiteral("selection");
inline const QString startingKey = QStringLiteral("starting");

inline const QString pluginGroup = QStringLiteral("plugin");
inline const QChar needsSeparator = QLatin1Char('\t');

} // namespace PluginBisectKeys

// The state of a plugin bisect, as it lives in the host's settings between restarts:
// what is suspected, what each step switches off, and the user's own selection, which
// every way out of the bisect writes back.
class PluginBisectPrivate
{
public:
    explicit PluginBisectPrivate(QSettings* settings)
        : m_settings(settings)
    {
        load();
    }

    void load();
    void save() const;
    void clear();

    // The Extensions that switching off the given ones switches off too: those that
    // need one of them, directly or through others. In load order.
    QStringList closure(const QStringList& off) const;
    void applySelection(const QStringList& off) const;
    void restoreSelection() const;
    void saveSelection() const;
    void nextStep();
    void setStep(const QStringList& half);
    QStringList inOrder(const QSet<QString>& names) const;
    // The restarts that halving n suspects takes at the most, beyond the first.
    static int ceilLog2(qsizetype n);

    QSettings* m_settings;
    PluginBisect::State m_state = PluginBisect::State::Idle;
    QStringList m_order; // the enabled Extensions, each after what it needs
    QMultiHash<QString, QString> m_needs; // plugin → a plugin of m_order it needs
    QStringList m_pinned;
    QStringList m_suspects;
    QStringList m_keptOff; // off for the rest of the search: it may hide another culprit
    QStringList m_half; // the suspects this step switches off
    QStringList m_culprits;
    int m_restarts = 0;
    int m_maximum = 0;
    QString m_errorString;
};

} // namespace Zelvane
