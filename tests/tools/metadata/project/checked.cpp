#include <QtCore/QObject>

class CheckedPlugin : public QObject
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID "org.zelvane.Test/1.0" FILE "checked.json")
};

#include "checked.moc"
