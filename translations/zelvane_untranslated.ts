<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1">
<context>
    <name>PluginsPage</name>
    <message>
        <source>No plugin is selected.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Plugins</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Filter plugins</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Core</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Extensions</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Other files</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Other files of the plugin folder</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Plugin details</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Changes apply at the next start.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Restart now</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Find a problem plugin...</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Find a problem plugin</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Start-up...</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Start-up</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>StartupPage</name>
    <message>
        <source>Start-up</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>Zelvane::DependencyProblem</name>
    <message>
        <source>Names itself as a dependency.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Needs a plugin with an empty name, which no plugin has.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Needs %1, which is not in the plugin folder.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Needs %1, whose file is refused.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Needs %1, which is switched off.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Needs %1, a Core plugin that is not the chosen one.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Needs %1, whose category &quot;%2&quot; never loads.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Needs %1 in a dependency cycle: %2.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Needs %1, which cannot load before it either.</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>Zelvane::PluginBisect</name>
    <message>
        <source>A plugin bisect is already under way.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>No plugin to test: every Extension that loads is pinned.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>No plugin bisect is under way.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>1 plugin is switched off for this test.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 plugins are switched off for this test.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Restart the application, then tell whether the problem is still there. %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Found it: %1 causes the problem.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The problem is gone with %1 switched off: no other plugin causes it.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The problem is still there with every plugin that was tested switched off: it comes from the core plugin, a pinned plugin or the application itself.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The application did not start during the plugin bisect. Your plugin selection is back as it was.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Find a plugin that causes a problem</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Tick the plugins to keep on, then start. Each step switches some plugins off and asks for a restart.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Plugins to keep on</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Start</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The problem is still there</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The problem is gone</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Look for another one</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Finish</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>Zelvane::PluginDiagnostic</name>
    <message>
        <source>Loaded now.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Will load at the next start.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Loaded now, before a plugin it needs.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Will load at the next start, before a plugin it needs.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>it is switched off</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>another Core plugin, %1, is chosen</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>its dependencies cannot be met</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>the library refuses the file (its &quot;Arguments&quot; are malformed)</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>the library refuses the file: %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>its category &quot;%1&quot; is neither Core nor Extension</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>the plugin folder has no Core plugin</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>no settings object is set</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Loaded now; will not load at the next start: %1.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Will not load: %1.</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>Zelvane::PluginExplanation</name>
    <message>
        <source>an object</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>an array</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>a number</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>a boolean</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>null</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>an empty string</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>a string</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>missing</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>it counts as a dependency on an empty name, which no plugin has</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>it counts as a dependency on the name &quot;%1&quot;</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>option names cannot be empty</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>option names cannot start with a &apos;-&apos;</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>option names cannot start with a &apos;/&apos;</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>option names cannot contain a &apos;=&apos;</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>State:</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>In its metadata:</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Needs:</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>nothing</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Needed by:</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>File:</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 (missing)</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Dependencies is %1, not a list of plugin names: it counts as no dependency at all</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Dependencies is %1, not a list of plugin names: %2</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>; it names %1, but as an object; write [&quot;%1&quot;]</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 (%2)</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 (%2, %3)</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 is %2, not a plugin name: %3</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>; it names %1, but as an object; write &quot;%1&quot;</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Command-line options:</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The host&apos;s parser can never accept it: %1.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 and %2 both declare --%3: the host&apos;s parser refuses the second.</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>Zelvane::PluginPresentation</name>
    <message>
        <source>Refused by the library: 1 file</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Refused by the library: %1 files</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>No category: 1 file</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>No category: %1 files</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Category &quot;%1&quot;: 1 file</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Category &quot;%1&quot;: %2 files</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>Zelvane::PluginsDialog</name>
    <message>
        <source>Plugins</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Close</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Start-up...</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Start-up</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Find a problem plugin...</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Find a problem plugin</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>Zelvane::PluginsWidget</name>
    <message>
        <source>Plugin details</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>No plugin is selected.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Filter plugins</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Core</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Core plugins</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Extensions</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Extension plugins</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Other &amp;files</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Other files of the plugin folder</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Changes apply at the next start.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Restart now</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Restart now</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Plugins</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>File</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Reason</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>Zelvane::SafeStart</name>
    <message>
        <source>the trial helper zelvane-trial is not installed</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>Zelvane::StartupProfile</name>
    <message>
        <source>loading the library</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>creating the root object</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>initialize()</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1: %2 (%3)</source>
        <extracomment>A plugin&apos;s start-up time and its part of the whole, e.g. &quot;Viewer: 12.3 ms (45.6%)&quot;</extracomment>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1, failed while loading the library</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1, failed while creating the root object</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1, failed in initialize()</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>No start-up has been profiled.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>1 plugin</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 plugins</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1, discovery %2, ordering %3</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Started in %1: %2</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Start failed after %1: %2</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%L1 ms</source>
        <extracomment>A duration in milliseconds, e.g. &quot;12.3 ms&quot;</extracomment>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%L1%</source>
        <extracomment>A part of the whole start-up, e.g. &quot;45.6%&quot;</extracomment>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>Zelvane::StartupProfileView</name>
    <message>
        <source>Start-up</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>Zelvane::TrialWatch</name>
    <message>
        <source>cannot start %1: %2</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>zelvane-trial made no progress within %1 s</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>zelvane-trial was killed by signal %1 outside any plugin</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>zelvane-trial exited with code %1 outside any plugin</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>while loading the library</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>while creating the root object</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>in initialize()</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>started: library %1 ms, initialize %2 ms</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>failed %1: %2</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>crashed %1: signal %2</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>exited %1: exit code %2</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>hung %1: no progress within the timeout, stopped</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>not tried: loading stops at the first plugin that cannot start</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>not loaded: the dependency ordering drops it once the plugins that cannot start are switched off</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>unloaded in %1 ms</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>crashed while unloading: signal %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>exited while unloading: exit code %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>hung while unloading: no progress within the timeout, stopped</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>not loaded: the dependency ordering drops it, as at every start</source>
        <translation type="unfinished"></translation>
    </message>
</context>
</TS>
