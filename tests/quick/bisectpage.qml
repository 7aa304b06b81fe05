import QtQuick
import QtTest
import Zelvane
import ZelvaneTest

// BisectPage: the plugin bisect as a guided flow, from pinning and starting to the
// culprit and back to the user's own selection, in the words of the Widgets flow.
Item {
    id: root

    width: 600
    height: 400

    Component {
        id: bisectPage

        BisectPage {
            anchors.fill: parent
        }
    }

    Component {
        id: pluginsPage

        PluginsPage {
            anchors.fill: parent
        }
    }

    TestCase {
        name: "BisectPage"
        when: windowShown

        // The restarts that the page of the current start asked for.
        property int restarts: 0
        readonly property string introduction: "Tick the plugins to keep on, then start. Each step switches some plugins off and asks for a restart."

        // A world of its own for the function, and the host's first page over it.
        function world(targets: var, ini: string): var {
            verify(Fixture.create(targets, ini))
            Plugins.pluginDirectory = Fixture.pluginDir()
            return start()
        }

        // One start of the host: a new page over the same settings.
        function start(): var {
            const page = createTemporaryObject(bisectPage, root)
            verify(page)
            restarts = 0
            page.restartRequested.connect(() => ++restarts)
            return page
        }

        // The row of a plugin to pin, once the list has laid it out.
        function pin(page: var, name: string): var {
            const pins = findChild(page, "pins")
            const index = page.flow.candidates.indexOf(name)
            verify(index >= 0, name)
            tryVerify(() => pins.itemAtIndex(index) !== null && pins.itemAtIndex(index).width > 0)
            return pins.itemAtIndex(index)
        }

        function status(page: var): string {
            return findChild(page, "status").text
        }

        // The object names of the buttons offered, left to right.
        function buttons(page: var): var {
            return ["start", "stillThere", "gone", "goOn", "finish"].filter(
                name => findChild(page, name).visible)
        }

        function click(page: var, name: string) {
            const button = findChild(page, name)
            verify(button.visible, name)
            mouseClick(button)
        }

        function test_guidedFlow() {
            let page = world(["zt_core", "zt_storage", "zt_viewer"], "[plugin]\nViewer=true\n")
            const before = Fixture.settingsContent()
            compare(page.title, "Find a plugin that causes a problem")
            compare(buttons(page), ["start"])
            compare(findChild(page, "start").text, "Start")
            compare(status(page), introduction)
            const pins = findChild(page, "pins")
            compare(pins.visible, true)
            compare(pins.count, 2)
            compare(page.flow.candidates, ["Storage", "Viewer"])
            compare(pin(page, "Storage").text, "Storage")
            compare(pin(page, "Viewer").text, "Viewer")
            compare(pin(page, "Storage").checked, false)

            click(page, "start")
            compare(restarts, 1)
            compare(pins.visible, false)
            compare(buttons(page), ["stillThere", "gone", "finish"])
            compare(findChild(page, "stillThere").text, "The problem is still there")
            compare(findChild(page, "gone").text, "The problem is gone")
            compare(findChild(page, "finish").text, "Finish")
            compare(status(page), "Restart the application, then tell whether the problem is still there. 2 plugins are switched off for this test.")
            compare(Fixture.storedSelection(), ["Storage=false", "Viewer=false"])

            // Every suspect off and the problem is gone: one of them.
            page = start()
            compare(buttons(page), ["stillThere", "gone", "finish"])
            click(page, "gone")
            compare(restarts, 1)
            compare(status(page), "Restart the application, then tell whether the problem is still there. 1 plugin is switched off for this test.")

            // Viewer off and the problem is still there: Storage.
            page = start()
            click(page, "stillThere")
            compare(status(page), "Found it: Storage causes the problem.")
            compare(page.flow.culprit, "Storage")
            compare(buttons(page), ["goOn", "finish"])
            compare(findChild(page, "goOn").text, "Look for another one")
            click(page, "finish")
            compare(restarts, 2)
            compare(buttons(page), ["start"])
            compare(status(page), introduction)
            compare(Fixture.settingsContent(), before)
        }

        function test_pinnedPluginsStayOn() {
            const page = world(["zt_core", "zt_storage", "zt_viewer"], "")
            mouseClick(pin(page, "Storage"))
            compare(page.flow.pinned, ["Storage"])
            compare(pin(page, "Storage").checked, true)
            click(page, "start")
            // Storage is pinned; Viewer alone is suspected and switched off.
            compare(Fixture.storedSelection(), ["Viewer=false"])
            compare(page.flow.pinned, ["Storage"])
            compare(status(page), "Restart the application, then tell whether the problem is still there. 1 plugin is switched off for this test.")
            click(page, "finish")
        }

        function test_everythingPinned() {
            const page = world(["zt_core", "zt_storage", "zt_viewer"], "")
            mouseClick(pin(page, "Viewer"))
            compare(page.flow.pinned, ["Viewer"])
            click(page, "start")
            compare(restarts, 0)
            compare(status(page), "No plugin to test: every Extension that loads is pinned.")
            compare(buttons(page), ["start"])
        }

        // Five Extensions: Bisect02 needs 01, 03 needs 02, 05 needs 04. With Bisect05
        // pinned (and so 04), the problem is Bisect03's; the answers are what a user who
        // sees it would give after each restart.
        function test_findsTheCulpritAcrossRestarts() {
            let page = world(["zt_core", "zt_bisect_01", "zt_bisect_02", "zt_bisect_03",
                              "zt_bisect_04", "zt_bisect_05"], "[plugin]\nBisect01=true\n")
            const before = Fixture.settingsContent()
            compare(page.flow.candidates.slice().sort(),
                    ["Bisect01", "Bisect02", "Bisect03", "Bisect04", "Bisect05"])
            mouseClick(pin(page, "Bisect05"))
            click(page, "start")
            compare(page.flow.pinned.slice().sort(), ["Bisect04", "Bisect05"])
            compare(page.flow.maximumRestarts, 3)
            let steps = 0
            while (page.flow.state === PluginBisectFlow.Testing) {
                // What is off is off on disk; the pinned plugins never are.
                const selection = Fixture.storedSelection()
                verify(!selection.includes("Bisect04=false"), selection)
                verify(!selection.includes("Bisect05=false"), selection)
                page = start()
                const problemIsThere = !page.flow.switchedOff.includes("Bisect03")
                click(page, problemIsThere ? "stillThere" : "gone")
                compare(restarts, 1)
                ++steps
                verify(steps <= 3)
            }
            compare(page.flow.state, PluginBisectFlow.Found)
            compare(page.flow.culprit, "Bisect03")
            verify(page.flow.restarts <= page.flow.maximumRestarts)
            compare(status(page), "Found it: Bisect03 causes the problem.")

            // Look for another one: with Bisect03 off the problem is gone.
            page = start()
            click(page, "goOn")
            compare(restarts, 1)
            compare(buttons(page), ["stillThere", "gone", "finish"])
            page = start()
            click(page, "gone")
            compare(page.flow.state, PluginBisectFlow.NoOtherCulprit)
            compare(status(page), "The problem is gone with Bisect03 switched off: no other plugin causes it.")
            compare(buttons(page), ["finish"])
            click(page, "finish")
            compare(Fixture.settingsContent(), before)
        }

        function test_notAnExtension() {
            let page = world(["zt_core", "zt_storage", "zt_viewer"], "")
            click(page, "start")
            page = start()
            click(page, "stillThere")
            compare(page.flow.state, PluginBisectFlow.NotAnExtension)
            compare(status(page), "The problem is still there with every plugin that was tested switched off: it comes from the core plugin, a pinned plugin or the application itself.")
            compare(buttons(page), ["finish"])
            click(page, "finish")
        }

        // Cancelled halfway, after a restart: the user's selection is back byte for byte.
        function test_cancelRestoresTheSelection() {
            let page = world(["zt_core", "zt_bisect_01", "zt_bisect_02", "zt_bisect_03",
                              "zt_bisect_04", "zt_bisect_05"],
                             "[General]\nkeep=1\n\n[plugin]\nBisect02=true\nBisect04=false\n")
            const before = Fixture.settingsContent()
            click(page, "start")
            page = start()
            click(page, "gone")
            verify(Fixture.settingsContent() !== before)
            page = start()
            click(page, "finish")
            compare(restarts, 1)
            compare(page.flow.state, PluginBisectFlow.Idle)
            compare(Fixture.settingsContent(), before)
        }

        function test_keyboardAndAccessibleNames() {
            const page = world(["zt_core", "zt_storage", "zt_viewer"], "")
            const pins = findChild(page, "pins")
            compare(pins.Accessible.name, "Plugins to keep on")
            compare(pin(page, "Storage").Accessible.name, "Storage")
            compare(findChild(page, "status").Accessible.name, introduction)
            for (const name of ["start", "stillThere", "gone", "goOn", "finish"])
                compare(findChild(page, name).Accessible.name, findChild(page, name).text)

            pins.forceActiveFocus()
            keyClick(Qt.Key_Space)
            compare(page.flow.pinned, ["Storage"])
            keyClick(Qt.Key_Down)
            keyClick(Qt.Key_Space)
            compare(page.flow.pinned, ["Storage", "Viewer"])
            keyClick(Qt.Key_Space)
            compare(page.flow.pinned, ["Storage"])
            keyClick(Qt.Key_Tab)
            verify(findChild(page, "start").activeFocus)
            keyClick(Qt.Key_Space)
            compare(restarts, 1)
            compare(Fixture.storedSelection(), ["Viewer=false"])
            keyClick(Qt.Key_Tab)
            verify(findChild(page, "stillThere").activeFocus || findChild(page, "gone").activeFocus
                   || findChild(page, "finish").activeFocus)
            findChild(page, "finish").forceActiveFocus()
            keyClick(Qt.Key_Space)
            compare(page.flow.state, PluginBisectFlow.Idle)
        }

        // The plugins page offers the bisect, over itself; its steps are restarts.
        function test_reachedFromThePluginsPage() {
            verify(Fixture.create(["zt_core", "zt_storage", "zt_viewer"], ""))
            Plugins.pluginDirectory = Fixture.pluginDir()
            const page = createTemporaryObject(pluginsPage, root)
            verify(page)
            restarts = 0
            page.restartRequested.connect(() => ++restarts)
            const button = findChild(page, "findProblemPlugin")
            compare(button.text, "Find a problem plugin...")
            compare(button.Accessible.name, "Find a problem plugin")
            mouseClick(button)
            const dialog = findChild(page, "bisectDialog")
            tryCompare(dialog, "opened", true)
            const bisect = findChild(page, "bisectLoader").item
            verify(bisect)
            compare(dialog.title, "Find a plugin that causes a problem")
            compare(status(bisect), introduction)
            click(bisect, "start")
            compare(restarts, 1)
            click(bisect, "finish")
            compare(restarts, 2)
            dialog.close()
            tryCompare(dialog, "visible", false)
        }
    }
}
