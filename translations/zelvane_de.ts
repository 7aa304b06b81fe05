<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="de">
<context>
    <name>PluginsPage</name>
    <message>
        <source>No plugin is selected.</source>
        <translation>Kein Plugin ausgewählt.</translation>
    </message>
    <message>
        <source>Plugins</source>
        <translation>Plugins</translation>
    </message>
    <message>
        <source>Filter plugins</source>
        <translation>Plugins filtern</translation>
    </message>
    <message>
        <source>Core</source>
        <translation>Core</translation>
    </message>
    <message>
        <source>Extensions</source>
        <translation>Erweiterungen</translation>
    </message>
    <message>
        <source>Other files</source>
        <translation>Andere Dateien</translation>
    </message>
    <message>
        <source>Other files of the plugin folder</source>
        <translation>Andere Dateien des Plugin-Ordners</translation>
    </message>
    <message>
        <source>Plugin details</source>
        <translation>Plugin-Details</translation>
    </message>
    <message>
        <source>Changes apply at the next start.</source>
        <translation>Änderungen gelten ab dem nächsten Start.</translation>
    </message>
    <message>
        <source>Restart now</source>
        <translation>Jetzt neu starten</translation>
    </message>
    <message>
        <source>Find a problem plugin...</source>
        <translation>Problem-Plugin finden …</translation>
    </message>
    <message>
        <source>Find a problem plugin</source>
        <translation>Problem-Plugin finden</translation>
    </message>
    <message>
        <source>Start-up...</source>
        <translation>Programmstart...</translation>
    </message>
    <message>
        <source>Start-up</source>
        <translation>Programmstart</translation>
    </message>
</context>
<context>
    <name>StartupPage</name>
    <message>
        <source>Start-up</source>
        <translation>Programmstart</translation>
    </message>
</context>
<context>
    <name>Zelvane::DependencyProblem</name>
    <message>
        <source>Names itself as a dependency.</source>
        <translation>Nennt sich selbst als Abhängigkeit.</translation>
    </message>
    <message>
        <source>Needs a plugin with an empty name, which no plugin has.</source>
        <translation>Benötigt ein Plugin mit leerem Namen, den kein Plugin hat.</translation>
    </message>
    <message>
        <source>Needs %1, which is not in the plugin folder.</source>
        <translation>Benötigt %1, das nicht im Plugin-Ordner liegt.</translation>
    </message>
    <message>
        <source>Needs %1, whose file is refused.</source>
        <translation>Benötigt %1, dessen Datei zurückgewiesen wird.</translation>
    </message>
    <message>
        <source>Needs %1, which is switched off.</source>
        <translation>Benötigt %1, das ausgeschaltet ist.</translation>
    </message>
    <message>
        <source>Needs %1, a Core plugin that is not the chosen one.</source>
        <translation>Benötigt %1, ein Core-Plugin, das nicht das gewählte ist.</translation>
    </message>
    <message>
        <source>Needs %1, whose category &quot;%2&quot; never loads.</source>
        <translation>Benötigt %1, dessen Kategorie „%2“ nie geladen wird.</translation>
    </message>
    <message>
        <source>Needs %1 in a dependency cycle: %2.</source>
        <translation>Benötigt %1 in einem Abhängigkeitszyklus: %2.</translation>
    </message>
    <message>
        <source>Needs %1, which cannot load before it either.</source>
        <translation>Benötigt %1, das ebenfalls nicht vor ihm geladen werden kann.</translation>
    </message>
</context>
<context>
    <name>Zelvane::PluginBisect</name>
    <message>
        <source>A plugin bisect is already under way.</source>
        <translation>Eine Plugin-Eingrenzung läuft bereits.</translation>
    </message>
    <message>
        <source>No plugin to test: every Extension that loads is pinned.</source>
        <translation>Kein Plugin zum Testen: Jede Erweiterung, die geladen wird, soll eingeschaltet bleiben.</translation>
    </message>
    <message>
        <source>No plugin bisect is under way.</source>
        <translation>Es läuft keine Plugin-Eingrenzung.</translation>
    </message>
    <message>
        <source>1 plugin is switched off for this test.</source>
        <translation>1 Plugin ist für diesen Test ausgeschaltet.</translation>
    </message>
    <message>
        <source>%1 plugins are switched off for this test.</source>
        <translation>%1 Plugins sind für diesen Test ausgeschaltet.</translation>
    </message>
    <message>
        <source>Restart the application, then tell whether the problem is still there. %1</source>
        <translation>Starten Sie die Anwendung neu und geben Sie dann an, ob das Problem noch besteht. %1</translation>
    </message>
    <message>
        <source>Found it: %1 causes the problem.</source>
        <translation>Gefunden: %1 verursacht das Problem.</translation>
    </message>
    <message>
        <source>The problem is gone with %1 switched off: no other plugin causes it.</source>
        <translation>Mit %1 ausgeschaltet ist das Problem verschwunden: Kein anderes Plugin verursacht es.</translation>
    </message>
    <message>
        <source>The problem is still there with every plugin that was tested switched off: it comes from the core plugin, a pinned plugin or the application itself.</source>
        <translation>Das Problem besteht auch, wenn jedes getestete Plugin ausgeschaltet ist: Es kommt vom Core-Plugin, von einem Plugin, das eingeschaltet bleiben soll, oder von der Anwendung selbst.</translation>
    </message>
    <message>
        <source>The application did not start during the plugin bisect. Your plugin selection is back as it was.</source>
        <translation>Die Anwendung ist während der Plugin-Eingrenzung nicht gestartet. Ihre Plugin-Auswahl ist wieder wie zuvor.</translation>
    </message>
    <message>
        <source>Find a plugin that causes a problem</source>
        <translation>Plugin finden, das ein Problem verursacht</translation>
    </message>
    <message>
        <source>Tick the plugins to keep on, then start. Each step switches some plugins off and asks for a restart.</source>
        <translation>Haken Sie die Plugins an, die eingeschaltet bleiben sollen, und starten Sie dann. Jeder Schritt schaltet einige Plugins aus und bittet um einen Neustart.</translation>
    </message>
    <message>
        <source>Plugins to keep on</source>
        <translation>Plugins, die eingeschaltet bleiben</translation>
    </message>
    <message>
        <source>Start</source>
        <translation>Starten</translation>
    </message>
    <message>
        <source>The problem is still there</source>
        <translation>Das Problem besteht noch</translation>
    </message>
    <message>
        <source>The problem is gone</source>
        <translation>Das Problem ist verschwunden</translation>
    </message>
    <message>
        <source>Look for another one</source>
        <translation>Nach einem weiteren suchen</translation>
    </message>
    <message>
        <source>Finish</source>
        <translation>Beenden</translation>
    </message>
</context>
<context>
    <name>Zelvane::PluginDiagnostic</name>
    <message>
        <source>Loaded now.</source>
        <translation>Jetzt geladen.</translation>
    </message>
    <message>
        <source>Will load at the next start.</source>
        <translation>Wird beim nächsten Start geladen.</translation>
    </message>
    <message>
        <source>Loaded now, before a plugin it needs.</source>
        <translation>Jetzt geladen, vor einem Plugin, das es benötigt.</translation>
    </message>
    <message>
        <source>Will load at the next start, before a plugin it needs.</source>
        <translation>Wird beim nächsten Start geladen, vor einem Plugin, das es benötigt.</translation>
    </message>
    <message>
        <source>it is switched off</source>
        <translation>es ist ausgeschaltet</translation>
    </message>
    <message>
        <source>another Core plugin, %1, is chosen</source>
        <translation>ein anderes Core-Plugin, %1, ist gewählt</translation>
    </message>
    <message>
        <source>its dependencies cannot be met</source>
        <translation>seine Abhängigkeiten lassen sich nicht erfüllen</translation>
    </message>
    <message>
        <source>the library refuses the file (its &quot;Arguments&quot; are malformed)</source>
        <translation>die Bibliothek weist die Datei zurück (ihre „Arguments“ sind fehlerhaft)</translation>
    </message>
    <message>
        <source>the library refuses the file: %1</source>
        <translation>die Bibliothek weist die Datei zurück: %1</translation>
    </message>
    <message>
        <source>its category &quot;%1&quot; is neither Core nor Extension</source>
        <translation>seine Kategorie „%1“ ist weder Core noch Extension</translation>
    </message>
    <message>
        <source>the plugin folder has no Core plugin</source>
        <translation>der Plugin-Ordner enthält kein Core-Plugin</translation>
    </message>
    <message>
        <source>no settings object is set</source>
        <translation>kein Einstellungsobjekt ist gesetzt</translation>
    </message>
    <message>
        <source>Loaded now; will not load at the next start: %1.</source>
        <translation>Jetzt geladen; wird beim nächsten Start nicht geladen: %1.</translation>
    </message>
    <message>
        <source>Will not load: %1.</source>
        <translation>Wird nicht geladen: %1.</translation>
    </message>
</context>
<context>
    <name>Zelvane::PluginExplanation</name>
    <message>
        <source>an object</source>
        <translation>ein Objekt</translation>
    </message>
    <message>
        <source>an array</source>
        <translation>ein Array</translation>
    </message>
    <message>
        <source>a number</source>
        <translation>eine Zahl</translation>
    </message>
    <message>
        <source>a boolean</source>
        <translation>ein Wahrheitswert</translation>
    </message>
    <message>
        <source>null</source>
        <translation>null</translation>
    </message>
    <message>
        <source>an empty string</source>
        <translation>eine leere Zeichenkette</translation>
    </message>
    <message>
        <source>a string</source>
        <translation>eine Zeichenkette</translation>
    </message>
    <message>
        <source>missing</source>
        <translation>nicht vorhanden</translation>
    </message>
    <message>
        <source>it counts as a dependency on an empty name, which no plugin has</source>
        <translation>es zählt als Abhängigkeit von einem leeren Namen, den kein Plugin hat</translation>
    </message>
    <message>
        <source>it counts as a dependency on the name &quot;%1&quot;</source>
        <translation>es zählt als Abhängigkeit vom Namen „%1“</translation>
    </message>
    <message>
        <source>option names cannot be empty</source>
        <translation>Optionsnamen dürfen nicht leer sein</translation>
    </message>
    <message>
        <source>option names cannot start with a &apos;-&apos;</source>
        <translation>Optionsnamen dürfen nicht mit &apos;-&apos; beginnen</translation>
    </message>
    <message>
        <source>option names cannot start with a &apos;/&apos;</source>
        <translation>Optionsnamen dürfen nicht mit &apos;/&apos; beginnen</translation>
    </message>
    <message>
        <source>option names cannot contain a &apos;=&apos;</source>
        <translation>Optionsnamen dürfen kein &apos;=&apos; enthalten</translation>
    </message>
    <message>
        <source>State:</source>
        <translation>Zustand:</translation>
    </message>
    <message>
        <source>In its metadata:</source>
        <translation>In seinen Metadaten:</translation>
    </message>
    <message>
        <source>Needs:</source>
        <translation>Benötigt:</translation>
    </message>
    <message>
        <source>nothing</source>
        <translation>nichts</translation>
    </message>
    <message>
        <source>Needed by:</source>
        <translation>Benötigt von:</translation>
    </message>
    <message>
        <source>File:</source>
        <translation>Datei:</translation>
    </message>
    <message>
        <source>%1 (missing)</source>
        <translation>%1 (fehlt)</translation>
    </message>
    <message>
        <source>Dependencies is %1, not a list of plugin names: it counts as no dependency at all</source>
        <translation>Dependencies ist %1, keine Liste von Plugin-Namen: es zählt als gar keine Abhängigkeit</translation>
    </message>
    <message>
        <source>Dependencies is %1, not a list of plugin names: %2</source>
        <translation>Dependencies ist %1, keine Liste von Plugin-Namen: %2</translation>
    </message>
    <message>
        <source>; it names %1, but as an object; write [&quot;%1&quot;]</source>
        <translation>; es nennt %1, aber als Objekt; schreiben Sie [&quot;%1&quot;]</translation>
    </message>
    <message>
        <source>%1 (%2)</source>
        <translation>%1 (%2)</translation>
    </message>
    <message>
        <source>%1 (%2, %3)</source>
        <translation>%1 (%2, %3)</translation>
    </message>
    <message>
        <source>%1 is %2, not a plugin name: %3</source>
        <translation>%1 ist %2, kein Plugin-Name: %3</translation>
    </message>
    <message>
        <source>; it names %1, but as an object; write &quot;%1&quot;</source>
        <translation>; es nennt %1, aber als Objekt; schreiben Sie &quot;%1&quot;</translation>
    </message>
    <message>
        <source>Command-line options:</source>
        <translation>Kommandozeilenoptionen:</translation>
    </message>
    <message>
        <source>The host&apos;s parser can never accept it: %1.</source>
        <translation>Der Kommandozeilenparser der Anwendung kann sie nie annehmen: %1.</translation>
    </message>
    <message>
        <source>%1 and %2 both declare --%3: the host&apos;s parser refuses the second.</source>
        <translation>%1 und %2 deklarieren beide --%3: Der Kommandozeilenparser der Anwendung weist die zweite zurück.</translation>
    </message>
</context>
<context>
    <name>Zelvane::PluginPresentation</name>
    <message>
        <source>Refused by the library: 1 file</source>
        <translation>Von der Bibliothek zurückgewiesen: 1 Datei</translation>
    </message>
    <message>
        <source>Refused by the library: %1 files</source>
        <translation>Von der Bibliothek zurückgewiesen: %1 Dateien</translation>
    </message>
    <message>
        <source>No category: 1 file</source>
        <translation>Ohne Kategorie: 1 Datei</translation>
    </message>
    <message>
        <source>No category: %1 files</source>
        <translation>Ohne Kategorie: %1 Dateien</translation>
    </message>
    <message>
        <source>Category &quot;%1&quot;: 1 file</source>
        <translation>Kategorie „%1“: 1 Datei</translation>
    </message>
    <message>
        <source>Category &quot;%1&quot;: %2 files</source>
        <translation>Kategorie „%1“: %2 Dateien</translation>
    </message>
</context>
<context>
    <name>Zelvane::PluginsDialog</name>
    <message>
        <source>Plugins</source>
        <translation>Plugins</translation>
    </message>
    <message>
        <source>Close</source>
        <translation>Schließen</translation>
    </message>
    <message>
        <source>Start-up...</source>
        <translation>Programmstart...</translation>
    </message>
    <message>
        <source>Start-up</source>
        <translation>Programmstart</translation>
    </message>
    <message>
        <source>Find a problem plugin...</source>
        <translation>Problem-Plugin finden …</translation>
    </message>
    <message>
        <source>Find a problem plugin</source>
        <translation>Problem-Plugin finden</translation>
    </message>
</context>
<context>
    <name>Zelvane::PluginsWidget</name>
    <message>
        <source>Plugin details</source>
        <translation>Plugin-Details</translation>
    </message>
    <message>
        <source>No plugin is selected.</source>
        <translation>Kein Plugin ausgewählt.</translation>
    </message>
    <message>
        <source>Filter plugins</source>
        <translation>Plugins filtern</translation>
    </message>
    <message>
        <source>&amp;Core</source>
        <translation>&amp;Core</translation>
    </message>
    <message>
        <source>Core plugins</source>
        <translation>Core-Plugins</translation>
    </message>
    <message>
        <source>&amp;Extensions</source>
        <translation>&amp;Erweiterungen</translation>
    </message>
    <message>
        <source>Extension plugins</source>
        <translation>Erweiterungs-Plugins</translation>
    </message>
    <message>
        <source>Other &amp;files</source>
        <translation>Andere &amp;Dateien</translation>
    </message>
    <message>
        <source>Other files of the plugin folder</source>
        <translation>Andere Dateien des Plugin-Ordners</translation>
    </message>
    <message>
        <source>Changes apply at the next start.</source>
        <translation>Änderungen gelten ab dem nächsten Start.</translation>
    </message>
    <message>
        <source>&amp;Restart now</source>
        <translation>&amp;Jetzt neu starten</translation>
    </message>
    <message>
        <source>Restart now</source>
        <translation>Jetzt neu starten</translation>
    </message>
    <message>
        <source>Plugins</source>
        <translation>Plugins</translation>
    </message>
    <message>
        <source>File</source>
        <translation>Datei</translation>
    </message>
    <message>
        <source>Reason</source>
        <translation>Grund</translation>
    </message>
</context>
<context>
    <name>Zelvane::SafeStart</name>
    <message>
        <source>the trial helper zelvane-trial is not installed</source>
        <translation>das Hilfsprogramm zelvane-trial ist nicht installiert</translation>
    </message>
</context>
<context>
    <name>Zelvane::StartupProfile</name>
    <message>
        <source>loading the library</source>
        <translation>Laden der Bibliothek</translation>
    </message>
    <message>
        <source>creating the root object</source>
        <translation>Erzeugen des Wurzelobjekts</translation>
    </message>
    <message>
        <source>initialize()</source>
        <translation>initialize()</translation>
    </message>
    <message>
        <source>%1: %2 (%3)</source>
        <extracomment>A plugin&apos;s start-up time and its part of the whole, e.g. &quot;Viewer: 12.3 ms (45.6%)&quot;</extracomment>
        <translation>%1: %2 (%3)</translation>
    </message>
    <message>
        <source>%1, failed while loading the library</source>
        <translation>%1, beim Laden der Bibliothek fehlgeschlagen</translation>
    </message>
    <message>
        <source>%1, failed while creating the root object</source>
        <translation>%1, beim Erzeugen des Wurzelobjekts fehlgeschlagen</translation>
    </message>
    <message>
        <source>%1, failed in initialize()</source>
        <translation>%1, in initialize() fehlgeschlagen</translation>
    </message>
    <message>
        <source>No start-up has been profiled.</source>
        <translation>Es wurde noch kein Programmstart gemessen.</translation>
    </message>
    <message>
        <source>1 plugin</source>
        <translation>1 Plugin</translation>
    </message>
    <message>
        <source>%1 plugins</source>
        <translation>%1 Plugins</translation>
    </message>
    <message>
        <source>%1, discovery %2, ordering %3</source>
        <translation>%1, Suche %2, Sortierung %3</translation>
    </message>
    <message>
        <source>Started in %1: %2</source>
        <translation>Gestartet in %1: %2</translation>
    </message>
    <message>
        <source>Start failed after %1: %2</source>
        <translation>Start nach %1 fehlgeschlagen: %2</translation>
    </message>
    <message>
        <source>%L1 ms</source>
        <extracomment>A duration in milliseconds, e.g. &quot;12.3 ms&quot;</extracomment>
        <translation>%L1 ms</translation>
    </message>
    <message>
        <source>%L1%</source>
        <extracomment>A part of the whole start-up, e.g. &quot;45.6%&quot;</extracomment>
        <translation>%L1 %</translation>
    </message>
</context>
<context>
    <name>Zelvane::StartupProfileView</name>
    <message>
        <source>Start-up</source>
        <translation>Programmstart</translation>
    </message>
</context>
<context>
    <name>Zelvane::TrialWatch</name>
    <message>
        <source>cannot start %1: %2</source>
        <translation>%1 lässt sich nicht starten: %2</translation>
    </message>
    <message>
        <source>zelvane-trial made no progress within %1 s</source>
        <translation>zelvane-trial kam innerhalb von %1 s nicht voran</translation>
    </message>
    <message>
        <source>zelvane-trial was killed by signal %1 outside any plugin</source>
        <translation>zelvane-trial wurde außerhalb jedes Plugins durch Signal %1 beendet</translation>
    </message>
    <message>
        <source>zelvane-trial exited with code %1 outside any plugin</source>
        <translation>zelvane-trial hat sich außerhalb jedes Plugins mit Code %1 beendet</translation>
    </message>
    <message>
        <source>while loading the library</source>
        <translation>beim Laden der Bibliothek</translation>
    </message>
    <message>
        <source>while creating the root object</source>
        <translation>beim Erzeugen des Wurzelobjekts</translation>
    </message>
    <message>
        <source>in initialize()</source>
        <translation>in initialize()</translation>
    </message>
    <message>
        <source>started: library %1 ms, initialize %2 ms</source>
        <translation>gestartet: Bibliothek %1 ms, initialize %2 ms</translation>
    </message>
    <message>
        <source>failed %1: %2</source>
        <translation>fehlgeschlagen %1: %2</translation>
    </message>
    <message>
        <source>crashed %1: signal %2</source>
        <translation>abgestürzt %1: Signal %2</translation>
    </message>
    <message>
        <source>exited %1: exit code %2</source>
        <translation>beendet %1: Exit-Code %2</translation>
    </message>
    <message>
        <source>hung %1: no progress within the timeout, stopped</source>
        <translation>hängen geblieben %1: kein Fortschritt innerhalb der Zeitgrenze, abgebrochen</translation>
    </message>
    <message>
        <source>not tried: loading stops at the first plugin that cannot start</source>
        <translation>nicht versucht: Das Laden endet beim ersten Plugin, das nicht starten kann</translation>
    </message>
    <message>
        <source>not loaded: the dependency ordering drops it once the plugins that cannot start are switched off</source>
        <translation>nicht geladen: Die Abhängigkeitsordnung lässt es aus, sobald die Plugins, die nicht starten können, ausgeschaltet sind</translation>
    </message>
    <message>
        <source>unloaded in %1 ms</source>
        <translation>entladen in %1 ms</translation>
    </message>
    <message>
        <source>crashed while unloading: signal %1</source>
        <translation>beim Entladen abgestürzt: Signal %1</translation>
    </message>
    <message>
        <source>exited while unloading: exit code %1</source>
        <translation>beim Entladen beendet: Exit-Code %1</translation>
    </message>
    <message>
        <source>hung while unloading: no progress within the timeout, stopped</source>
        <translation>beim Entladen hängen geblieben: kein Fortschritt innerhalb der Zeitgrenze, abgebrochen</translation>
    </message>
    <message>
        <source>not loaded: the dependency ordering drops it, as at every start</source>
        <translation>nicht geladen: Die Abhängigkeitsordnung lässt es aus, wie bei jedem Start</translation>
    </message>
</context>
</TS>
