#include <QtTest/QtTest>
class S : public QObject
{
    Q_OBJECT
};
QTEST_MAIN(S)
#include "tst_rel_plugins.moc"
