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

        // Every item below parent whose objectName starts with prefix, visible or not.
        function items(parent, prefix) {
            let found = []
            const children = parent.children || []
            for (let child = 0; child < children.length; ++child) {
                const item = children[child]
                if (item.objectName && item.objectName.startsWith(prefix))
                    found.push(item)
                found = found.concat(items(item, prefix))
            }
            return found
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

        // The name of an other files' group in the expectations: its category, or
        // "refused".
        function groupName(group) {
            return group.key === "refused" ? "refused" : group.key.substring("category:".length)
        }

        // The rows of the other files: "> Group" closed, "v Group" open, a file's title
        // indented.
        function otherRows() {
            const others = child("otherFiles")
            let texts = []
            for (let row = 0; row < others.count; ++row) {
                const line = others.model[row]
                texts.push(line.header ? (line.expanded ? "v " : "> ") + groupName(line) : "  " + line.title)
            }
            return texts
        }

        // The first row of a group, or of a file.
        function otherRow(name) {
            const others = child("otherFiles")
            for (let row = 0; row < others.count; ++row) {
                const line = others.model[row]
                if ((line.header ? groupName(line) : line.title) === name)
                    return row
            }
            return -1
        }

        function fileOf(name) {
            for (const file of Plugins.otherFiles) {
                if (file.title === name)
                    return file
            }
            return null
        }

        // The lines of the details, as a screen reader reads them.
        function detailLines() {
            const details = child("details")
            waitForItemPolished(details)
            let lines = []
            for (let row = 0; row < details.count; ++row) {
                // The view makes only the lines on screen, and a long one hides the rest.
                if (!details.itemAtIndex(row)) {
                    details.positionViewAtIndex(row, ListView.Beginning)
                    waitForItemPolished(details)
                }
                const line = details.itemAtIndex(row)
                verify(line, "details line " + row + " is made")
                lines.push(line.Accessible.name)
            }
            details.positionViewAtBeginning()
            return lines
        }

        // The sentences of an explanation, joined as PluginExplanation::sentences() joins them.
        function sentences(parts) {
            let lines = []
            for (const part of parts) {
                const paragraph = [part.label, part.text].filter(piece => piece.length > 0)
                if (paragraph.length > 0)
                    lines.push(paragraph.join(" "))
                for (const item of part.items)
                    lines.push([item.code, item.text, item.note].filter(piece => piece.length > 0).join(" "))
            }
            return lines
        }

        function compareDetailsWithExplanation(title, filePath) {
            const parts = Plugins.explanation(filePath)
            verify(parts.length > 0)
            compare(detailLines(), [title].concat(sentences(parts)))
        }

        function test_headersAreVisible() {
            compare(rows(), ["AltCore", "[Core]", "[Viewer]", "[Storage]"])
            compare(Plugins.loadOrder, ["Core", "Storage", "Viewer"])
            const list = child("plugins")
            const headers = items(list.contentItem, "section").filter(header => header.visible)
            compare(headers.map(header => header.text).sort(), ["Core", "Extensions"])
            for (const header of headers) {
                verify(header.width > 0 && header.height > 0, header.text)
                verify(header.opacity > 0, header.text)
                compare(header.Accessible.name, header.text)
                // Inside the list's viewport, above the first row of its group.
                const position = header.mapToItem(list, 0, 0)
                verify(position.y >= 0 && position.y + header.height <= list.height, header.text)
            }
            // The first row of each group carries its header, above the row's name.
            compare(items(list.itemAtIndex(0), "section")[0].visible, true)
            compare(items(list.itemAtIndex(0), "section")[0].text, "Core")
            compare(items(list.itemAtIndex(1), "section")[0].visible, false)
            compare(items(list.itemAtIndex(2), "section")[0].visible, true)
            compare(items(list.itemAtIndex(2), "section")[0].text, "Extensions")
            compare(items(list.itemAtIndex(3), "section")[0].visible, false)
            // Under a filter that leaves only extensions, their header still shows.
            child("filter").text = "documents"
            compare(rows(), ["[Viewer]", "[Storage]"])
            waitForItemPolished(list)
            compare(items(list.itemAtIndex(0), "section")[0].visible, true)
            compare(items(list.itemAtIndex(0), "section")[0].text, "Extensions")
            child("filter").text = ""
        }

        function test_highlightFollowsTheCurrentRow() {
            const list = child("plugins")
            function highlighted() {
                let rows = []
                for (let row = 0; row < list.count; ++row) {
                    const item = list.itemAtIndex(row)
                    if (item.highlighted) {
                        verify(Qt.colorEqual(item.color, page.palette.highlight))
                        rows.push(row)
                    } else {
                        verify(Qt.colorEqual(item.color, "transparent"))
                    }
                }
                return rows
            }
            compare(highlighted(), [])
            // The mouse, beside the name: the row becomes current without a tick.
            const viewer = list.itemAtIndex(2)
            mouseClick(viewer, viewer.width / 2, viewer.height - 5)
            compare(list.currentIndex, 2)
            compare(page.currentPlugin, "Viewer")
            compare(highlighted(), [2])
            compare(rows(), ["AltCore", "[Core]", "[Viewer]", "[Storage]"])
            // The keyboard.
            verify(list.activeFocus)
            keyClick(Qt.Key_Down)
            compare(page.currentPlugin, "Storage")
            compare(highlighted(), [3])
            keyClick(Qt.Key_Up)
            keyClick(Qt.Key_Up)
            compare(page.currentPlugin, "Core")
            compare(highlighted(), [1])
            // A file below the list shows instead: no row stands for it.
            page.currentOther = fileOf("Tool")
            compare(highlighted(), [])
            // The host's choice.
            page.currentPlugin = "AltCore"
            compare(list.currentIndex, 0)
            compare(highlighted(), [0])
        }

        function test_detailsTellTheExplanation() {
            page.currentPlugin = "Viewer"
            compareDetailsWithExplanation("Viewer", Plugins.details["Viewer"].filePath)
            const details = child("details")
            // The title is a heading.
            const title = details.itemAtIndex(0)
            compare(title.text, "Viewer")
            verify(title.font.bold)
            verify(title.font.pixelSize > details.itemAtIndex(1).font.pixelSize)
            compare(title.Accessible.role, Accessible.Heading)
            // The labels in bold, followed by the text; an option's synopsis as code.
            const texts = []
            for (let row = 0; row < details.count; ++row)
                texts.push(details.itemAtIndex(row).text)
            verify(texts.includes("<b>Needs:</b> "), texts.join("\n"))
            verify(texts.includes("Storage"))
            verify(texts.includes("<b>Needed by:</b> nothing"))
            verify(texts.includes("<b>Command-line options:</b> "))
            verify(texts.includes("<code>--viewer-theme &lt;theme&gt;</code> Colour theme"))
            verify(texts.includes("<code>--viewer-readonly</code> Opens documents read-only"))
            verify(texts.includes("<b>State:</b> " + Plugins.explanation(Plugins.details["Viewer"].filePath)
                                  .find(part => part.kind === "state").text))
            // A warning, and a warning's note, in bold.
            compare(page.markup({ kind: "item", code: "", text: "Needs <Storage>", note: "", warning: true }),
                    "<b>Needs &lt;Storage&gt;</b>")
            compare(page.markup({ kind: "item", code: "\"-color\"", text: "Colour", note: "Never.", warning: true }),
                    "<code>&quot;-color&quot;</code> Colour <b>Never.</b>")

            page.currentPlugin = "AltCore"
            compareDetailsWithExplanation("AltCore", Plugins.details["AltCore"].filePath)
            compare(details.itemAtIndex(1).text, "A second core plugin")
            compare(details.itemAtIndex(1).textFormat, Text.PlainText)

            // A description of 100 KB wraps inside the pane; the page keeps its width and
            // the end of the details can be reached.
            page.currentOther = fileOf("Longread")
            compareDetailsWithExplanation("Longread", fileOf("Longread").filePath)
            const description = details.itemAtIndex(1)
            verify(description.text.length > 100000)
            verify(description.width <= details.width)
            verify(description.contentWidth <= description.width)
            verify(description.lineCount > 10)
            compare(page.width, root.width)
            details.positionViewAtEnd()
            waitForItemPolished(details)
            const last = details.itemAtIndex(details.count - 1)
            verify(last.Accessible.name.startsWith("File: "))
            verify(last.mapToItem(details, 0, 0).y < details.height)
        }

        function test_restartNoticeAndButton() {
            const list = child("plugins")
            list.forceActiveFocus()
            list.currentIndex = 3
            compare(page.currentPlugin, "Storage")
            compare(child("notice").visible, false)
            keyClick(Qt.Key_Space)
            compare(rows(), ["AltCore", "[Core]", "Viewer", "Storage"])
            tryCompare(Plugins, "restartNeeded", true)
            compare(child("notice").visible, true)
            compare(child("noticeText").text, "Changes apply at the next start.")
            // "Restart now" waits for the host to offer a restart.
            compare(child("restart").visible, false)
            compare(Plugins.canRestart(), false)
            Plugins.restartOffered = true
            compare(child("restart").visible, true)
            compare(child("restart").text, "Restart now")
            compare(Plugins.canRestart(), true)
            let asked = 0
            const count = () => ++asked
            Plugins.restartRequested.connect(count)
            mouseClick(child("restart"))
            Plugins.restartRequested.disconnect(count)
            compare(asked, 1)
            Plugins.restartOffered = false
            compare(child("restart").visible, false)
            // The details were read again after the tick.
            compare(page.currentPlugin, "Storage")
            compareDetailsWithExplanation("Storage", Plugins.details["Storage"].filePath)
            verify(detailLines().includes(
                       "State: Loaded now; will not load at the next start: it is switched off."))
            // Ticking Viewer ticks Storage again: what runs is what will run.
            list.forceActiveFocus()
            list.currentIndex = 2
            keyClick(Qt.Key_Space)
            compare(rows(), ["AltCore", "[Core]", "[Viewer]", "[Storage]"])
            tryCompare(Plugins, "restartNeeded", false)
            compare(child("notice").visible, false)
        }

        // A tick changes some lines of the details: those change, and the view keeps the
        // items of the others, so that a long text is not laid out again.
        function test_detailsChangeOnlyTheLinesThatDiffer() {
            page.currentPlugin = "Viewer"
            const details = child("details")
            waitForItemPolished(details)
            const title = details.itemAtIndex(0)
            verify(title)
            compare(title.text, "Viewer")
            const before = detailLines()
            try {
                // Storage off, with Viewer shown: Viewer goes with it, and says why.
                verify(page.setChecked(3, false))
                compare(rows(), ["AltCore", "[Core]", "Viewer", "Storage"])
                tryCompare(Plugins, "restartNeeded", true)
                compare(page.currentPlugin, "Viewer")
                compareDetailsWithExplanation("Viewer", Plugins.details["Viewer"].filePath)
                verify(detailLines().join("\n") !== before.join("\n"))
                verify(details.itemAtIndex(0) === title, "the title keeps its item")
            } finally {
                // Ticking Viewer ticks Storage again.
                page.setChecked(2, true)
            }
            compare(rows(), ["AltCore", "[Core]", "[Viewer]", "[Storage]"])
            tryCompare(Plugins, "restartNeeded", false)
            compare(detailLines(), before)
            verify(details.itemAtIndex(0) === title, "the title keeps its item")
        }

        function test_otherGroupsCollapsedAndExpanding() {
            verify(child("otherFiles").visible)
            // One group per category, the refused files last; titled as Plugins says.
            const groups = Plugins.otherGroups()
            compare(groups.map(group => group.title),
                    ["Category \"Tool\": 1 file", "Category \"Sidebar\": 1 file",
                     "Category \"Reader\": 1 file", "Refused by the library: 1 file"])
            for (const group of groups) {
                for (const file of group.files)
                    compare(file.category, group.category)
            }
            compare(groups[3].files.map(file => file.title), ["libzt_notaplugin.so"])
            // The headers show these titles.
            const others = child("otherFiles")
            for (let row = 0; row < others.count; ++row)
                verify(others.itemAtIndex(row).text.endsWith(groups[row].title))
            compare(otherRows(), ["> Tool", "> Sidebar", "> Reader", "> refused"])

            // The mouse opens a group and chooses a file.
            const sidebar = others.itemAtIndex(otherRow("Sidebar"))
            verify(sidebar.header)
            mouseClick(sidebar)
            compare(otherRows(), ["> Tool", "v Sidebar", "  Sidebar", "> Reader", "> refused"])
            const file = others.itemAtIndex(2)
            verify(file.visible)
            mouseClick(file)
            compare(page.current.title, "Sidebar")
            verify(file.highlighted)
            compareDetailsWithExplanation("Sidebar", fileOf("Sidebar").filePath)
            mouseClick(others.itemAtIndex(otherRow("Sidebar")))
            compare(otherRows(), ["> Tool", "> Sidebar", "> Reader", "> refused"])

            // The keyboard: Enter and Space open and close, Right opens, Left closes.
            others.forceActiveFocus()
            others.currentIndex = otherRow("refused")
            keyClick(Qt.Key_Return)
            compare(otherRows(), ["> Tool", "> Sidebar", "> Reader", "v refused", "  libzt_notaplugin.so"])
            keyClick(Qt.Key_Down)
            compare(page.current.title, "libzt_notaplugin.so")
            compareDetailsWithExplanation("libzt_notaplugin.so", fileOf("libzt_notaplugin.so").filePath)
            verify(detailLines()[1].endsWith("is not a plugin (no string IID found)."))
            keyClick(Qt.Key_Left)
            compare(otherRows(), ["> Tool", "> Sidebar", "> Reader", "> refused"])
            compare(others.currentIndex, otherRow("refused"))
            keyClick(Qt.Key_Space)
            compare(otherRows(), ["> Tool", "> Sidebar", "> Reader", "v refused", "  libzt_notaplugin.so"])
            keyClick(Qt.Key_Space)
            keyClick(Qt.Key_Up)
            keyClick(Qt.Key_Right)
            compare(otherRows(), ["> Tool", "> Sidebar", "v Reader", "  Longread", "> refused"])
            // A new page starts with every group closed again.
            page = createTemporaryObject(pageComponent, root)
            compare(otherRows(), ["> Tool", "> Sidebar", "> Reader", "> refused"])
        }

        function test_filterReachesEveryGroup() {
            const filter = child("filter")
            filter.text = "sIdEbAr"
            compare(rows(), [])
            compare(otherRows(), ["> Sidebar"])
            filter.text = "NOTAPLUGIN"
            compare(otherRows(), ["> refused"])
            // A description counts too, as for the rows.
            filter.text = "CATEGORY"
            compare(otherRows(), ["> Tool", "> Sidebar"])
            compare(Plugins.matchesFilter(fileOf("Tool").filePath, "never LOADED"), true)
            compare(Plugins.matchesFilter(fileOf("Tool").filePath, "Sidebar"), false)
            filter.text = "documents"
            compare(rows(), ["[Viewer]", "[Storage]"])
            compare(otherRows(), [])
            verify(!child("otherFiles").visible)
            // An open group stays open under the filter.
            filter.text = ""
            child("otherFiles").currentIndex = otherRow("Tool")
            page.toggleGroup(otherRow("Tool"))
            filter.text = "tool"
            compare(otherRows(), ["v Tool", "  Tool"])
            filter.text = ""
            compare(otherRows(), ["v Tool", "  Tool", "> Sidebar", "> Reader", "> refused"])
        }

        function test_keyboard() {
            const filter = child("filter")
            const list = child("plugins")
            const others = child("otherFiles")
            const details = child("details")
            // Tab goes filter, list, other files, details.
            filter.forceActiveFocus()
            keyClick(Qt.Key_Tab)
            verify(list.activeFocus)
            keyClick(Qt.Key_Tab)
            verify(others.activeFocus)
            keyClick(Qt.Key_Tab)
            verify(details.activeFocus)
            keyClick(Qt.Key_Backtab, Qt.ShiftModifier)
            verify(others.activeFocus)
            keyClick(Qt.Key_Backtab, Qt.ShiftModifier)
            verify(list.activeFocus)
            // Down from the filter goes to the list; the arrows move the current row.
            filter.forceActiveFocus()
            keyClick(Qt.Key_Down)
            verify(list.activeFocus)
            compare(page.currentPlugin, "AltCore")
            keyClick(Qt.Key_Down)
            keyClick(Qt.Key_Down)
            compare(page.currentPlugin, "Viewer")
            keyClick(Qt.Key_Down)
            // Past the last row, on to the other files.
            keyClick(Qt.Key_Down)
            verify(others.activeFocus)
            compare(others.currentIndex, 0)
            keyClick(Qt.Key_Enter)
            compare(otherRows(), ["v Tool", "  Tool", "> Sidebar", "> Reader", "> refused"])
            keyClick(Qt.Key_Down)
            compare(page.current.title, "Tool")
            keyClick(Qt.Key_Down)
            keyClick(Qt.Key_Down)
            keyClick(Qt.Key_Right)
            compare(otherRows(), ["v Tool", "  Tool", "> Sidebar", "v Reader", "  Longread", "> refused"])
            keyClick(Qt.Key_Down)
            compare(page.current.title, "Longread")
            // The details scroll with the keyboard.
            keyClick(Qt.Key_Tab)
            verify(details.activeFocus)
            const top = details.contentY
            keyClick(Qt.Key_PageDown)
            verify(details.contentY > top)
            keyClick(Qt.Key_Down)
            keyClick(Qt.Key_Home)
            compare(details.contentY, top)
            // Space ticks: see test_restartNoticeAndButton.
        }

        function test_accessibleNames() {
            Plugins.restartOffered = true
            page.currentPlugin = "Viewer"
            page.toggleGroup(0)
            waitForRendering(page)
            compare(page.Accessible.name, "Plugins")
            compare(child("filter").Accessible.name, "Filter plugins")
            compare(child("plugins").Accessible.name, "Plugins")
            compare(child("otherFiles").Accessible.name, "Other files of the plugin folder")
            compare(child("details").Accessible.name, "Plugin details")
            compare(child("restart").Accessible.name, "Restart now")
            compare(child("noticeText").Accessible.name, "Changes apply at the next start.")
            const list = child("plugins")
            for (let row = 0; row < list.count; ++row) {
                const item = list.itemAtIndex(row)
                compare(item.Accessible.name, item.name)
                verify(item.Accessible.role === Accessible.CheckBox
                       || item.Accessible.role === Accessible.RadioButton)
                compare(item.Accessible.checked, item.checked)
            }
            for (const header of items(list.contentItem, "section"))
                verify(header.Accessible.name.length > 0)
            const others = child("otherFiles")
            for (let row = 0; row < others.count; ++row) {
                const item = others.itemAtIndex(row)
                compare(item.Accessible.name, others.model[row].title)
                verify(item.Accessible.name.length > 0)
            }
            const details = child("details")
            for (let row = 0; row < details.count; ++row)
                verify(details.itemAtIndex(row).Accessible.name.length > 0, "details line " + row)
            Plugins.restartOffered = false
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

        function test_clickChoosesTheOtherCore() {
            const list = child("plugins")
            const altCore = list.itemAtIndex(0)
            verify(altCore)
            mouseClick(altCore, 10, altCore.height - 8)
            compare(rows(), ["[AltCore]", "Core", "[Viewer]", "[Storage]"])
            tryCompare(Plugins, "restartNeeded", true)
            // Back to Core, as the other tests expect.
            mouseClick(list.itemAtIndex(1), 10, list.itemAtIndex(1).height - 8)
            compare(rows(), ["AltCore", "[Core]", "[Viewer]", "[Storage]"])
            tryCompare(Plugins, "restartNeeded", false)
        }

        // The picture of docs/quick.md, written by the C++ side when asked to.
        // The host's last start, beside the plugins, as in the widget's dialog: Core,
        // Viewer and Storage were loaded.
        function test_startupReachedFromThePage() {
            const button = child("startup")
            compare(button.text, "Start-up...")
            compare(button.Accessible.name, "Start-up")
            mouseClick(button)
            const dialog = child("startupDialog")
            tryCompare(dialog, "opened", true)
            const startup = child("startupLoader").item
            verify(startup)
            compare(dialog.title, "Start-up")
            const summary = findChild(startup, "summary").text
            verify(summary.startsWith("Started in "), summary)
            verify(summary.includes(": 3 plugins, discovery "), summary)
            compare(findChild(startup, "bars").count, 3)
            dialog.close()
            tryCompare(dialog, "visible", false)
        }

        function test_screenshot() {
            page.currentPlugin = "AltCore"
            page.toggleGroup(otherRow("Sidebar"))
            waitForRendering(page)
            const image = grabImage(page)
            compare(image.width, page.width)
            image.save(Screenshots.path("plugins-page.png")) // throws when it cannot
        }
    }
}
