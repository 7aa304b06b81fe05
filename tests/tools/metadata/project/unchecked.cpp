#include <QtCore/QObject>

class UncheckedPlugin : public QObject
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID "org.zelvane.Test/1.0" FILE "unchecked.json")
};

#include "unchecked.moc"
