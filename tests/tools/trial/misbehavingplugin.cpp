// A plugin that takes its host down, or holds it up, at one step of its loading. Built
// once per scenario (see CMakeLists.txt) with:
//   ZELVANE_TRIAL_STEP    1 loading the library (a static initialiser), 2 creating the
//                         root object (its constructor), 3 initialize()
//   ZELVANE_TRIAL_ACTION  1 SIGSEGV, 2 abort(), 3 exit(3), 4 hang, 5 sleep
//   ZELVANE_TRIAL_SLEEP_MS  how long action 5 sleeps
//   ZELVANE_TRIAL_SWITCH  when defined, the name of an environment variable: the plugin
//                         misbehaves only while it is set (and not empty)

#include <zelvane/iplugin.h>

#include <QtCore/QThread>

#include <cstdlib>
#include <unistd.h>

namespace {

void misbehave()
{
#ifdef ZELVANE_TRIAL_SWITCH
    if (qEnvironmentVariableIsEmpty(ZELVANE_TRIAL_SWITCH))
        return;
#endif
#if ZELVANE_TRIAL_ACTION == 1
    // Through a volatile pointer, so that the compiler emits the store and the
    // process dies of SIGSEGV rather than of a trap the compiler put in its place.
    volatile int* volatile nowhere = nullptr;
    *nowhere = 1;
#elif ZELVANE_TRIAL_ACTION == 2
    std::abort();
#elif ZELVANE_TRIAL_ACTION == 3
    std::exit(3);
#elif ZELVANE_TRIAL_ACTION == 4
    for (;;)
        ::pause();
#else
    QThread::msleep(ZELVANE_TRIAL_SLEEP_MS);
#endif
}

#if ZELVANE_TRIAL_STEP == 1
struct AtLoad
{
    AtLoad() { misbehave(); }
} atLoad;
#endif

} // namespace

class MisbehavingPlugin : public Zelvane::IPlugin
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID ZELVANE_TEST_IID FILE ZELVANE_TEST_METADATA)

public:
    MisbehavingPlugin()
    {
#if ZELVANE_TRIAL_STEP == 2
        misbehave();
#endif
    }

    bool initialize(const QMap<QString, QString>&, QString*) override
    {
#if ZELVANE_TRIAL_STEP == 3
        misbehave();
#endif
        return true;
    }
};

#include "misbehavingplugin.moc"
