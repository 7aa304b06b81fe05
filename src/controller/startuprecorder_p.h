#pragma once

// Internal to the controller: never installed, never exported.

#include "controller/startupprofile_p.h"
#include "plugin/loadsteps_p.h"

#include <chrono>

namespace Zelvane {

// Times one loadPlugins() as it runs. Constructed first thing in the call, told where
// the call has got to, and on destruction (as the call returns, on every path) it
// stores what it measured for lastStartupRecord() and, when the category
// "zelvane.startup" is on for debug, writes the profile to the log. Recording always
// runs, so that a screen can show the real start-up after the fact; it costs one clock
// read per step entered and nothing is formatted while the category is off.
class StartupRecorder final : public LoadStepListener
{
public:
    StartupRecorder();
    ~StartupRecorder() override;

    void discovered(); // the folder is listed and every file's metadata read
    void ordered(); // the plugins are selected and ordered
    void loading(const QString& name, const QString& fileName); // before a load()
    void loadFailed(); // that load() answered false
    void modelBuilt(); // the plugins model is made: the call succeeds

    void stepEntered(const PluginLoader& plugin, LoadStep step) override;

private:
    using Clock = std::chrono::steady_clock;

    StartupRecord m_record;
    Clock::time_point m_started;
    Clock::time_point m_lap; // when the part being timed began
    LoadStep m_step = LoadStep::Finished; // the step being timed; Finished between loads
    LoadStep m_lastStep = LoadStep::Finished; // the last one before load() returned
};

// Times one shutdown() the same way, plugin by plugin.
class ShutdownRecorder
{
public:
    ShutdownRecorder();
    ~ShutdownRecorder();
    ShutdownRecorder(const ShutdownRecorder&) = delete;
    ShutdownRecorder& operator=(const ShutdownRecorder&) = delete;

    void unloading(const QString& name);
    void unloaded();

private:
    using Clock = std::chrono::steady_clock;

    QList<StartupRecord::Unload> m_unloads;
    Clock::time_point m_started;
    Clock::time_point m_lap;
};

} // namespace Zelvane
