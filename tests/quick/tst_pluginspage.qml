import QtQuick
import QtTest
import Zelvane
import ZelvaneTest

Item {
    id: root
    width: 800
    height: 500

    Component {
        id: pageComponent
        PluginsPage {
            anchors.fill: parent
        }
    }

    TestCase {
        id: test
        name: "PluginsPage"
        when: windowShown

        property var page: null

        function init() {
            page = createTemporaryObject(pageComponent, root)
            verify(page)
            waitForRendering(page)
        }

        function child(name) {
            return findChild(page, name)
        }

        function rows() {
            const list = child("plugins")
            let names = []
            for (let row = 0; row < list.count; ++row) {
                const index = list.model.index(row, 0)
                const name = list.model.data(index, PluginsModel.NameRole)
                names.push(list.model.data(index, PluginsModel.CheckedRole) ? "[" + name + "]" : name)
            }
            return names
        }

        function test_groups() {
            compare(rows(), ["AltCore", "[Core]", "[Viewer]", "[Storage]"])
            compare(Plugins.loadOrder, ["Core", "Storage", "Viewer"])
            compare(child("notice").visible, false)
            compare(child("filter").Accessible.name, "Filter plugins")
            compare(child("plugins").Accessible.name, "Plugins")
            compare(child("details").Accessible.name, "Plugin details")
        }

        function test_typingFilters() {
            const list = child("plugins")
            list.forceActiveFocus()
            keyClick(Qt.Key_S)
            keyClick(Qt.Key_H)
            keyClick(Qt.Key_O)
            compare(child("filter").text, "sho")
            verify(child("filter").activeFocus)
            compare(rows(), ["[Viewer]"])
            child("filter").text = "ALTC"
            compare(rows(), ["AltCore"])
            child("filter").text = ""
        }

        function test_spaceTicksAndTheNoticeAppears() {
            const list = child("plugins")
            list.forceActiveFocus()
            list.currentIndex = 3
            compare(page.currentPlugin, "Storage")
            keyClick(Qt.Key_Space)
            compare(rows(), ["AltCore", "[Core]", "Viewer", "Storage"])
            tryCompare(Plugins, "restartNeeded", true)
            compare(child("notice").visible, true)
            // "Restart now" waits for the host to offer a restart.
            compare(child("restart").visible, false)
            compare(Plugins.canRestart(), false)
            Plugins.restartOffered = true
            compare(child("restart").visible, true)
            compare(Plugins.canRestart(), true)
            Plugins.restartOffered = false
            compare(page.currentPlugin, "Storage")
            compare(child("detailsState").text,
                    "State: Loaded now; will not load at the next start: it is switched off.")
            // Ticking Viewer ticks Storage again: what runs is what will run.
            list.currentIndex = 2
            keyClick(Qt.Key_Space)
            compare(rows(), ["AltCore", "[Core]", "[Viewer]", "[Storage]"])
            tryCompare(Plugins, "restartNeeded", false)
        }

        function test_clickChoosesTheOtherCore() {
            const list = child("plugins")
            const altCore = list.itemAtIndex(0)
            verify(altCore)
            mouseClick(altCore, 10, altCore.height / 2)
            compare(rows(), ["[AltCore]", "Core", "[Viewer]", "[Storage]"])
            tryCompare(Plugins, "restartNeeded", true)
            // Back to Core, as the other tests expect.
            mouseClick(list.itemAtIndex(1), 10, list.itemAtIndex(1).height / 2)
            compare(rows(), ["AltCore", "[Core]", "[Viewer]", "[Storage]"])
            tryCompare(Plugins, "restartNeeded", false)
        }

        function test_detailsOfAPluginThatWillNotLoad() {
            page.currentPlugin = "AltCore"
            compare(child("detailsName").text, "AltCore")
            compare(child("detailsDescription").text, "A second core plugin")
            compare(child("detailsState").text,
                    "State: Will not load: another Core plugin, Core, is chosen.")
            compare(child("detailsNeeds").text, "Needs: nothing")
            page.currentPlugin = "Viewer"
            compare(child("detailsNeeds").text, "Needs: Storage")
            compare(child("detailsOptions").text,
                    "Command-line options:\n--viewer-theme <theme>  Colour theme\n"
                    + "--viewer-readonly  Opens documents read-only")
            verify(child("detailsFile").text.endsWith("/libzt_viewer.so"))
            page.currentPlugin = "Storage"
            compare(child("detailsNeededBy").text, "Needed by: Viewer")
        }

        // The picture of docs/quick.md, written by the C++ side when asked to.
        function test_screenshot() {
            page.currentPlugin = "AltCore"
            waitForRendering(page)
            const image = grabImage(page)
            compare(image.width, page.width)
            image.save(Screenshots.path("plugins-page.png")) // throws when it cannot
        }

        function test_refusedFile() {
            compare(Plugins.otherFiles.length, 1)
            page.currentOther = Plugins.otherFiles[0]
            compare(child("detailsName").text, "libzt_notaplugin.so")
            verify(child("detailsState").text.endsWith("is not a plugin (no string IID found)."))
        }
    }
}
