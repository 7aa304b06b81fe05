#include <zelvane/widgets/startupprofileview.h>

#include <QtWidgets/QGridLayout>
#include <QtWidgets/QLabel>
#include <QtWidgets/QProgressBar>
#include <QtWidgets/QScrollArea>
#include <QtWidgets/QVBoxLayout>

#include <cmath>

namespace Zelvane {

class StartupProfileViewPrivate
{
public:
    void rebuild();

    StartupProfile m_profile;
    QLabel* m_summary = nullptr;
    QWidget* m_rows = nullptr;
    QGridLayout* m_grid = nullptr;
};

void StartupProfileViewPrivate::rebuild()
{
    m_summary->setText(m_profile.summaryText());
    while (QLayoutItem* item = m_grid->takeAt(0)) {
        delete item->widget();
        delete item;
    }
    // The slowest first: what a user looks for is the plugin that costs the most.
    const QList<StartupProfile::Plugin> plugins = m_profile.slowestFirst();
    for (int row = 0; row < int(plugins.size()); ++row) {
        const StartupProfile::Plugin& plugin = plugins.at(row);
        auto* label = new QLabel(m_profile.pluginText(plugin), m_rows);
        label->setObjectName(QStringLiteral("pluginText"));
        auto* bar = new QProgressBar(m_rows);
        bar->setObjectName(QStringLiteral("pluginBar"));
        // Tenths of a percent, so that a plugin of a small share still shows a bar.
        bar->setRange(0, 1000);
        bar->setValue(int(std::lround(m_profile.share(plugin) * 10.0)));
        bar->setFormat(StartupProfile::shareText(m_profile.share(plugin)));
        bar->setAccessibleName(label->text());
        m_grid->addWidget(label, row, 0);
        m_grid->addWidget(bar, row, 1);
    }
    m_grid->setColumnStretch(1, 1);
}

StartupProfileView::StartupProfileView(QWidget* parent)
    : QWidget(parent)
    , d(std::make_unique<StartupProfileViewPrivate>())
{
    auto* layout = new QVBoxLayout(this);
    d->m_summary = new QLabel(this);
    d->m_summary->setObjectName(QStringLiteral("summary"));
    d->m_summary->setWordWrap(true);
    layout->addWidget(d->m_summary);

    auto* scroll = new QScrollArea(this);
    scroll->setWidgetResizable(true);
    d->m_rows = new QWidget(scroll);
    d->m_grid = new QGridLayout(d->m_rows);
    d->m_grid->setAlignment(Qt::AlignTop);
    scroll->setWidget(d->m_rows);
    layout->addWidget(scroll, 1);

    setWindowTitle(tr("Start-up"));
    refresh();
}

StartupProfileView::~StartupProfileView() = default;

StartupProfile StartupProfileView::profile() const
{
    return d->m_profile;
}

void StartupProfileView::setProfile(const StartupProfile& profile)
{
    d->m_profile = profile;
    d->rebuild();
}

void StartupProfileView::refresh()
{
    setProfile(StartupProfile::last());
}

} // namespace Zelvane
