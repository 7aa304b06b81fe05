// A Qt plugin that carries one fixture's metadata: a realistic starting point for the
// scanning target. It is only ever read as bytes.

#include <QtCore/QObject>

class SeedPlugin : public QObject
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID "org.zelvane.Test/1.0" FILE ZELVANE_SEED_METADATA)
};

#include "seedplugin.moc"
