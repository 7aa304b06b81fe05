#include <zelvane/widgets/pluginbisectwidget.h>

#include <zelvane/diagnostics/loaddiagnostics.h>
#include <zelvane/diagnostics/pluginbisect.h>

#include <QtCore/QSettings>
#include <QtWidgets/QHBoxLayout>
#include <QtWidgets/QLabel>
#include <QtWidgets/QListWidget>
#include <QtWidgets/QPushButton>
#include <QtWidgets/QVBoxLayout>

namespace Zelvane {

class PluginBisectWidgetPrivate
{
public:
    QPushButton* addButton(const QString& objectName, const QString& text);
    void fillPinList();

    QSettings* m_settings = nullptr;
    QDir m_dir;
    QLabel* m_status = nullptr;
    QListWidget* m_pins = nullptr;
    QPushButton* m_start = nullptr;
    QPushButton* m_stillThere = nullptr;
    QPushButton* m_gone = nullptr;
    QPushButton* m_goOn = nullptr;
    QPushButton* m_finish = nullptr;
    QHBoxLayout* m_buttons = nullptr;
};

QPushButton* PluginBisectWidgetPrivate::addButton(const QString& objectName, const QString& text)
{
    auto* button = new QPushButton(text);
    button->setObjectName(objectName);
    m_buttons->addWidget(button);
    return button;
}

PluginBisectWidget::PluginBisectWidget(QSettings* settings, const QDir& dir, QWidget* parent)
    : QWidget(parent)
    , d(std::make_unique<PluginBisectWidgetPrivate>())
{
    // The words are the bisect's own, which the QML page shows as well.
    using Text = PluginBisect::FlowText;
    d->m_settings = settings;
    d->m_dir = dir;
    auto* layout = new QVBoxLayout(this);
    d->m_status = new QLabel(this);
    d->m_status->setObjectName(QStringLiteral("status"));
    d->m_status->setWordWrap(true);
    layout->addWidget(d->m_status);
    d->m_pins = new QListWidget(this);
    d->m_pins->setObjectName(QStringLiteral("pins"));
    d->m_pins->setAccessibleName(PluginBisect::flowText(Text::PinList));
    layout->addWidget(d->m_pins, 1);
    d->m_buttons = new QHBoxLayout;
    layout->addLayout(d->m_buttons);
    d->m_start = d->addButton(QStringLiteral("start"), PluginBisect::flowText(Text::Start));
    d->m_stillThere
        = d->addButton(QStringLiteral("stillThere"), PluginBisect::flowText(Text::StillThere));
    d->m_gone = d->addButton(QStringLiteral("gone"), PluginBisect::flowText(Text::Gone));
    d->m_goOn = d->addButton(QStringLiteral("goOn"), PluginBisect::flowText(Text::GoOn));
    d->m_finish = d->addButton(QStringLiteral("finish"), PluginBisect::flowText(Text::Finish));
    setWindowTitle(PluginBisect::flowText(Text::Title));

    // Each action works on a bisect made afresh from the settings: the state lives there,
    // across restarts, and not in this widget.
    const auto act = [this](auto action, bool restart) {
        PluginBisect bisect(d->m_settings);
        action(bisect);
        refresh();
        if (restart)
            emit restartRequested();
    };
    connect(d->m_start, &QPushButton::clicked, this, [this, act] {
        QStringList pinned;
        for (int row = 0; row < d->m_pins->count(); ++row) {
            if (d->m_pins->item(row)->checkState() == Qt::Checked)
                pinned.append(d->m_pins->item(row)->text());
        }
        bool started = false;
        QString error;
        act(
            [&](PluginBisect& bisect) {
                started = bisect.start(d->m_dir, pinned);
                error = bisect.errorString();
            },
            false);
        if (started)
            emit restartRequested();
        else
            d->m_status->setText(error);
    });
    connect(d->m_stillThere, &QPushButton::clicked, this,
            [act] { act([](PluginBisect& bisect) { bisect.answer(true); }, true); });
    connect(d->m_gone, &QPushButton::clicked, this,
            [act] { act([](PluginBisect& bisect) { bisect.answer(false); }, true); });
    connect(d->m_goOn, &QPushButton::clicked, this,
            [act] { act([](PluginBisect& bisect) { bisect.goOn(); }, true); });
    connect(d->m_finish, &QPushButton::clicked, this,
            [act] { act([](PluginBisect& bisect) { bisect.finish(); }, true); });
    refresh();
}

PluginBisectWidget::~PluginBisectWidget() = default;

void PluginBisectWidgetPrivate::fillPinList()
{
    m_pins->clear();
    // The Extensions that load with the user's selection, in load order: the ones the
    // bisect can suspect, or pin.
    const LoadDiagnostics diagnostics(m_dir, m_settings);
    for (const QString& name : diagnostics.loadOrder()) {
        if (!diagnostics.plugin(name).isExtension())
            continue;
        auto* item = new QListWidgetItem(name, m_pins);
        item->setFlags(Qt::ItemIsEnabled | Qt::ItemIsUserCheckable);
        item->setCheckState(Qt::Unchecked);
    }
}

void PluginBisectWidget::refresh()
{
    const PluginBisect bisect(d->m_settings);
    const PluginBisect::State state = bisect.state();
    const bool idle = state == PluginBisect::State::Idle;
    if (idle) {
        d->m_status->setText(PluginBisect::flowText(PluginBisect::FlowText::Introduction));
        d->fillPinList();
    } else {
        d->m_status->setText(bisect.statusText());
    }
    d->m_pins->setVisible(idle);
    d->m_start->setVisible(idle);
    d->m_stillThere->setVisible(state == PluginBisect::State::Testing);
    d->m_gone->setVisible(state == PluginBisect::State::Testing);
    d->m_goOn->setVisible(state == PluginBisect::State::Found);
    d->m_finish->setVisible(!idle);
}

} // namespace Zelvane
