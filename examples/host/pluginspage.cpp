#include "pluginspage.h"

#include <zelvane/pluginscaterogies.h>

#include <QtCore/QAbstractItemModel>
#include <QtQml/QQmlContext>
#include <QtQml/QQmlError>

namespace ZelvaneDemo {

PluginsPage::PluginsPage(QAbstractItemModel* model, QWindow* parent)
    : QQuickView(parent)
{
    setTitle(tr("Plugins"));
    setResizeMode(QQuickView::SizeRootObjectToView);
    rootContext()->setContextProperty(QStringLiteral("pluginsModel"), model);
    rootContext()->setContextProperty(QStringLiteral("pluginCategories"),
                                      new Zelvane::PluginsCaterogies(this));
    setSource(QUrl(QStringLiteral("qrc:/zelvane-demo/PluginsPage.qml")));
    resize(640, 400);
}

QString PluginsPage::errorText() const
{
    QStringList lines;
    for (const QQmlError& error : errors())
        lines.append(error.toString());
    return lines.join(QLatin1Char('\n'));
}

} // namespace ZelvaneDemo
