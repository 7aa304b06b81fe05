pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Zelvane

// The plugin settings page: the controller's plugins grouped as Core (one choice) and
// Extensions, the other files of the folder grouped by category, a filter, the details
// of the current plugin as the Diagnostics component explains it, and a notice when the
// saved selection waits for a restart. Every tick goes to the model, which spreads it
// along the dependencies and saves it at once.
//
// Every sentence on the page comes from Plugins (and so from the Diagnostics component);
// the page only lays the sentences out, the way the Widgets screen does, so that both
// screens tell a user the same thing about a file.
Pane {
    id: page

    // The name of the plugin that the details show.
    property string currentPlugin
    property alias filterText: filter.text
    // A file without a row (refused, or of another category) chosen below the list.
    property var currentOther: null
    readonly property var current: page.currentOther ? page.currentOther
                                                     : page.detailsFor(page.currentPlugin, page.revision)
    readonly property string currentFile: page.current ? page.current.filePath : ""
    readonly property string coreKey: Plugins.categories ? Plugins.categories.corePluginCategoryKey() : ""
    property bool resetting: false
    // Counts the rereads of the folder, so that what the page read from Plugins for one
    // plugin is read again after a tick.
    property int revision: 0
    // Whether the notice offers "Restart now": by default when the host offers a restart
    // (Plugins.restartOffered); a page whose own restartRequested() is handled sets it.
    property bool offerRestart: Plugins.restartOffered
    // The keys of the groups of other files that the user opened. Every group starts
    // closed: a folder written for another host may hold hundreds of such files, and
    // the plugins that the user can tick come first.
    property var expandedGroups: ({})

    // The user asked to restart; Plugins.restartRequested() is emitted as well.
    signal restartRequested()

    function setChecked(row: int, checked: bool): bool {
        return plugins.setData(plugins.index(row, 0), checked, PluginsModel.CheckedRole)
    }

    // The model searches its rows itself: a loop here would cross from QML to the model
    // twice a row, at every tick, over a thousand rows.
    function rowOf(name: string): int {
        if (name.length === 0 || plugins.rowCount() === 0)
            return -1
        // 0 is Qt.MatchExactly, which the QML tools of Qt 6.4 do not know.
        const found = plugins.match(plugins.index(0, 0), PluginsModel.NameRole, name, 1, 0)
        return found.length > 0 ? found[0].row : -1
    }

    // The details of the plugin named, read again at each reread (revision). One
    // plugin's: reading Plugins.details converts every plugin's details at each read.
    function detailsFor(name: string, revision: int): var {
        if (name.length === 0 || revision < 0)
            return undefined
        const found = Plugins.detailsOf(name)
        return Object.keys(found).length > 0 ? found : undefined
    }

    function showRow(row: int) {
        if (row < 0)
            return
        page.currentOther = null
        page.currentPlugin = plugins.data(plugins.index(row, 0), PluginsModel.NameRole)
    }

    function isExpanded(key: string): bool {
        return page.expandedGroups[key] === true
    }

    function setExpanded(key: string, expanded: bool) {
        const groups = Object.assign({}, page.expandedGroups)
        groups[key] = expanded
        page.expandedGroups = groups
    }

    function escaped(text: string): string {
        return text.replace(/&/g, "&amp;").replace(/</g, "&lt;").replace(/>/g, "&gt;")
                   .replace(/"/g, "&quot;")
    }

    // The emphasis of the widget's details pane: the label in bold before the text; in a
    // list, the code in a monospaced font, a warning in bold, or its note in bold after
    // the text, so that what the user has to act on stands out of a long list.
    function markup(line: var): string {
        if (line.kind === "paragraph")
            return "<b>" + page.escaped(line.label) + "</b> " + page.escaped(line.text)
        let pieces = []
        if (line.code.length > 0)
            pieces.push("<code>" + page.escaped(line.code) + "</code>")
        if (line.text.length > 0) {
            pieces.push(line.warning && line.note.length === 0 ? "<b>" + page.escaped(line.text) + "</b>"
                                                               : page.escaped(line.text))
        }
        if (line.note.length > 0)
            pieces.push("<b>" + page.escaped(line.note) + "</b>")
        return pieces.join(" ")
    }

    // A line as one sentence, for a screen reader.
    function sentence(line: var): string {
        let pieces = line.kind === "item" ? [line.code, line.text, line.note]
                                          : [line.label, line.text]
        return pieces.filter(piece => piece !== undefined && piece.length > 0).join(" ")
    }

    // The rows of the other files: a header per group that the filter leaves a file in,
    // and the group's files when it is open. Plugins groups and filters them, by the
    // rules of both screens.
    function otherRows(): var {
        let rows = []
        for (const group of Plugins.otherGroups(filter.text)) {
            const files = group.files
            const expanded = page.isExpanded(group.key)
            rows.push({ header: true, key: group.key, title: group.title, expanded: expanded,
                        filePath: "", file: null })
            if (!expanded)
                continue
            for (const file of files) {
                rows.push({ header: false, key: group.key, title: file.title, expanded: false,
                            filePath: file.filePath, file: file })
            }
        }
        return rows
    }

    // The rows are made anew when the folder, the filter or a group changes; the row
    // that had the keyboard keeps it.
    function updateOthers() {
        const before = others.currentIndex >= 0 && others.currentIndex < others.count
                ? others.model[others.currentIndex] : null
        others.rebuilding = true
        const rows = page.otherRows()
        others.model = rows
        let index = -1
        if (before) {
            index = rows.findIndex(row => row.key === before.key && row.filePath === before.filePath)
            if (index < 0)
                index = rows.findIndex(row => row.header && row.key === before.key)
        }
        others.currentIndex = index
        others.rebuilding = false
    }

    function toggleGroup(row: int) {
        const line = others.model[row]
        if (!line || !line.header)
            return
        page.setExpanded(line.key, !line.expanded)
    }

    Accessible.name: qsTr("Plugins")

    // A plugin chosen by the host shows, and its row becomes the current one.
    onCurrentPluginChanged: {
        page.currentOther = null
        const row = page.rowOf(page.currentPlugin)
        if (!page.resetting && list.currentIndex !== row)
            list.currentIndex = row
    }
    onExpandedGroupsChanged: page.updateOthers()

    // Plugins reads the folder again after every tick, and so does the page.
    function reread() {
        ++page.revision
        detailLines.reread()
        page.updateOthers()
    }

    Component.onCompleted: {
        page.reread()
        Plugins.detailsChanged.connect(page.reread)
    }
    // The singleton outlives the page.
    Component.onDestruction: Plugins.detailsChanged.disconnect(page.reread)

    // The lines of the details, one per paragraph or list item, so that the view only
    // makes what is on screen: a plugin may have thousands of dependencies. A reread
    // changes only the lines that differ, and the view keeps the others' items.
    PluginDetailsModel {
        id: detailLines
        plugins: Plugins
        filePath: page.currentFile
        title: page.current ? page.current.title : ""
        emptyText: qsTr("No plugin is selected.")
    }

    PluginsFilterModel {
        id: plugins
        sourceModel: Plugins.model
        filterText: filter.text

        // Every tick resets the model; the plugin that had the keyboard keeps it.
        onModelAboutToBeReset: page.resetting = true
        onModelReset: {
            list.currentIndex = page.rowOf(page.currentPlugin)
            page.resetting = false
        }
    }

    ColumnLayout {
        anchors.fill: parent

        TextField {
            id: filter
            objectName: "filter"
            Layout.fillWidth: true
            placeholderText: qsTr("Filter plugins")
            Accessible.name: qsTr("Filter plugins")
            onTextChanged: page.updateOthers()
            Keys.onDownPressed: {
                const target = list.count > 0 || others.count === 0 ? list : others
                target.forceActiveFocus()
                if (target.currentIndex < 0 && target.count > 0)
                    target.currentIndex = 0
            }
        }

        // Anchored rather than laid out: the lists take two fifths of the width whatever
        // their rows hold, and the details the rest, however long their lines.
        Item {
            id: split
            Layout.fillWidth: true
            Layout.fillHeight: true

            ColumnLayout {
                id: lists
                anchors.left: split.left
                anchors.top: split.top
                anchors.bottom: split.bottom
                width: Math.round(split.width * 0.4)

                ListView {
                    id: list
                    objectName: "plugins"
                    Layout.fillWidth: true
                    Layout.fillHeight: true
                    clip: true
                    focus: true
                    model: plugins
                    currentIndex: -1
                    keyNavigationEnabled: true
                    activeFocusOnTab: true
                    highlightMoveDuration: 0
                    Accessible.name: qsTr("Plugins")
                    Accessible.role: Accessible.List
                    ScrollBar.vertical: ScrollBar { }

                    // The group headers are part of the first row of each group, not a
                    // section delegate: Qt 6.4's ListView makes its section delegates in a
                    // context of its own, which a component of a file with "pragma
                    // ComponentBehavior: Bound" refuses ("Component is not ready"), so
                    // the headers never showed. A row knows from the model, not from the
                    // view's layout, whether it starts a group: its height depends on it.

                    delegate: Item {
                        id: row

                        required property int index
                        required property string name
                        required property string description
                        required property string category
                        required property bool checked
                        readonly property bool isCore: row.category === page.coreKey
                        readonly property bool startsGroup: row.index === 0
                            || plugins.data(plugins.index(row.index - 1, 0), PluginsModel.CategoryRole) !== row.category
                        // The row whose details show; none while a file below is shown.
                        readonly property bool highlighted: row.ListView.isCurrentItem
                                                            && page.currentOther === null
                        readonly property alias color: background.color

                        objectName: "plugin:" + row.name
                        width: ListView.view.width
                        implicitHeight: (row.startsGroup ? header.implicitHeight : 0) + background.height
                        Accessible.role: row.isCore ? Accessible.RadioButton : Accessible.CheckBox
                        Accessible.name: row.name
                        Accessible.description: row.description
                        Accessible.checkable: true
                        Accessible.checked: row.checked
                        Accessible.selected: row.highlighted

                        Label {
                            id: header
                            objectName: "section"
                            visible: row.startsGroup
                            width: row.width
                            text: row.isCore ? qsTr("Core") : qsTr("Extensions")
                            font.bold: true
                            topPadding: row.index > 0 ? 8 : 2
                            bottomPadding: 2
                            elide: Text.ElideRight
                            Accessible.role: Accessible.Heading
                            Accessible.name: header.text
                        }

                        Rectangle {
                            id: background
                            y: row.startsGroup ? header.implicitHeight : 0
                            width: row.width
                            height: Math.max(check.implicitHeight, radio.implicitHeight)
                            color: row.highlighted ? page.palette.highlight : "transparent"

                            CheckBox {
                                id: check
                                visible: !row.isCore
                                width: Math.min(implicitWidth, row.width)
                                text: row.name
                                checked: row.checked
                                // The list has the keyboard, not each row's box.
                                activeFocusOnTab: false
                                font.bold: row.checked
                                palette.windowText: row.highlighted ? page.palette.highlightedText
                                                                    : page.palette.windowText
                                Accessible.name: row.name
                                onToggled: {
                                    list.currentIndex = row.index
                                    page.showRow(row.index)
                                    page.setChecked(row.index, check.checked)
                                    list.forceActiveFocus()
                                }
                            }
                            RadioButton {
                                id: radio
                                visible: row.isCore
                                width: Math.min(implicitWidth, row.width)
                                text: row.name
                                checked: row.checked
                                activeFocusOnTab: false
                                font.bold: row.checked
                                font.italic: true
                                palette.windowText: row.highlighted ? page.palette.highlightedText
                                                                    : page.palette.windowText
                                Accessible.name: row.name
                                onToggled: {
                                    list.currentIndex = row.index
                                    page.showRow(row.index)
                                    page.setChecked(row.index, true)
                                    list.forceActiveFocus()
                                }
                            }
                            TapHandler {
                                onTapped: {
                                    list.currentIndex = row.index
                                    page.showRow(row.index)
                                    list.forceActiveFocus()
                                }
                            }
                        }
                    }

                    onCurrentIndexChanged: {
                        if (!page.resetting)
                            page.showRow(list.currentIndex)
                    }
                    Keys.onSpacePressed: {
                        if (list.currentIndex < 0)
                            return
                        const index = plugins.index(list.currentIndex, 0)
                        const isCore = plugins.data(index, PluginsModel.CategoryRole) === page.coreKey
                        page.showRow(list.currentIndex)
                        page.setChecked(list.currentIndex,
                                        isCore || !plugins.data(index, PluginsModel.CheckedRole))
                    }
                    Keys.onDownPressed: event => {
                        if (list.currentIndex === list.count - 1 && others.count > 0) {
                            others.forceActiveFocus()
                            if (others.currentIndex < 0)
                                others.currentIndex = 0
                        } else {
                            event.accepted = false
                        }
                    }
                    // Typing filters.
                    Keys.onPressed: event => page.typeIntoFilter(event)
                }

                Label {
                    objectName: "otherFilesLabel"
                    visible: others.count > 0
                    text: qsTr("Other files")
                    font.bold: true
                    Accessible.role: Accessible.Heading
                    Accessible.name: text
                }

                ListView {
                    id: others
                    objectName: "otherFiles"

                    // Set while the rows are made anew: the view moves its current row
                    // then, the user does not.
                    property bool rebuilding: false

                    Layout.fillWidth: true
                    Layout.preferredHeight: Math.min(others.contentHeight, lists.height / 3)
                    visible: others.count > 0
                    clip: true
                    currentIndex: -1
                    keyNavigationEnabled: true
                    activeFocusOnTab: true
                    highlightMoveDuration: 0
                    Accessible.name: qsTr("Other files of the plugin folder")
                    Accessible.role: Accessible.Tree
                    ScrollBar.vertical: ScrollBar { }

                    delegate: Rectangle {
                        id: other

                        required property int index
                        required property var modelData
                        readonly property bool header: other.modelData.header
                        readonly property string text: otherLabel.text
                        readonly property bool highlighted: other.header
                            ? other.ListView.isCurrentItem && others.activeFocus
                            : other.modelData.filePath === (page.currentOther ? page.currentOther.filePath : "")

                        objectName: (other.header ? "group:" : "file:") + other.modelData.title
                        width: ListView.view.width
                        implicitHeight: otherLabel.implicitHeight
                        color: other.highlighted ? page.palette.highlight : "transparent"
                        Accessible.role: other.header ? Accessible.Button : Accessible.ListItem
                        Accessible.name: other.modelData.title
                        Accessible.checkable: other.header
                        Accessible.checked: other.modelData.expanded
                        Accessible.selected: other.highlighted

                        Label {
                            id: otherLabel
                            width: parent.width
                            leftPadding: other.header ? 2 : 20
                            topPadding: 3
                            bottomPadding: 3
                            // A disclosure triangle, closed or open, before a group's name.
                            text: other.header ? (other.modelData.expanded ? "\u25BE " : "\u25B8 ")
                                                 + other.modelData.title
                                               : other.modelData.title
                            font.bold: other.header
                            elide: Text.ElideRight
                            color: other.highlighted ? page.palette.highlightedText
                                                     : page.palette.windowText
                            Accessible.ignored: true
                        }
                        TapHandler {
                            onTapped: {
                                others.currentIndex = other.index
                                others.forceActiveFocus()
                                if (other.header)
                                    page.toggleGroup(other.index)
                            }
                        }
                    }

                    onCurrentIndexChanged: {
                        if (others.rebuilding || others.currentIndex < 0)
                            return
                        const line = others.model[others.currentIndex]
                        if (line && !line.header)
                            page.currentOther = line.file
                    }
                    Keys.onSpacePressed: page.toggleGroup(others.currentIndex)
                    Keys.onReturnPressed: page.toggleGroup(others.currentIndex)
                    Keys.onEnterPressed: page.toggleGroup(others.currentIndex)
                    Keys.onRightPressed: {
                        const line = others.model[others.currentIndex]
                        if (line && line.header && !line.expanded)
                            page.toggleGroup(others.currentIndex)
                    }
                    Keys.onLeftPressed: {
                        const line = others.model[others.currentIndex]
                        if (line && (line.expanded || !line.header)) {
                            page.setExpanded(line.key, false)
                        }
                    }
                    Keys.onUpPressed: event => {
                        if (others.currentIndex <= 0 && list.count > 0) {
                            list.forceActiveFocus()
                            list.currentIndex = list.count - 1
                            page.showRow(list.currentIndex)
                        } else {
                            event.accepted = false
                        }
                    }
                    Keys.onPressed: event => page.typeIntoFilter(event)
                }
            }

            Rectangle {
                id: detailsFrame
                anchors.left: lists.right
                anchors.leftMargin: 6
                anchors.right: split.right
                anchors.top: split.top
                anchors.bottom: split.bottom
                color: page.palette.base
                border.width: 1
                border.color: details.activeFocus ? page.palette.highlight : page.palette.mid

                ListView {
                    id: details
                    objectName: "details"
                    anchors.fill: parent
                    anchors.margins: 6
                    clip: true
                    model: detailLines
                    activeFocusOnTab: true
                    keyNavigationEnabled: false
                    boundsBehavior: Flickable.StopAtBounds
                    Accessible.name: qsTr("Plugin details")
                    Accessible.role: Accessible.Document
                    ScrollBar.vertical: ScrollBar { id: detailsBar }

                    delegate: Label {
                        id: line

                        required property string kind
                        required property string part
                        required property string label
                        required property string body
                        required property string code
                        required property string note
                        required property bool warning
                        // The line as markup() and sentence() take it; made only for the
                        // lines on screen.
                        readonly property var modelData: ({ kind: line.kind, part: line.part,
                                                            label: line.label, text: line.body,
                                                            code: line.code, note: line.note,
                                                            warning: line.warning })
                        // The description is the plugin's own text, shown as it is.
                        readonly property bool plain: line.kind !== "item"
                                                      && (line.kind !== "paragraph"
                                                          || line.label.length === 0)

                        objectName: "detail:" + line.kind + (line.part.length > 0 ? ":" + line.part : "")
                        width: ListView.view.width - detailsBar.width
                        leftPadding: line.kind === "item" ? 18 : 0
                        topPadding: line.kind === "item" ? 1 : 6
                        bottomPadding: line.kind === "item" ? 1 : 2
                        wrapMode: Text.Wrap
                        textFormat: line.plain ? Text.PlainText : Text.RichText
                        text: line.plain ? line.body : page.markup(line.modelData)
                        color: page.palette.text
                        font.bold: line.kind === "title"
                        font.pixelSize: line.kind === "title" ? page.font.pixelSize * 1.3
                                                              : page.font.pixelSize
                        Accessible.role: line.kind === "title" ? Accessible.Heading : Accessible.StaticText
                        Accessible.name: page.sentence(line.modelData)

                        Label {
                            visible: line.kind === "item"
                            x: 6
                            y: line.topPadding
                            text: "\u2022"
                            color: page.palette.text
                            Accessible.ignored: true
                        }
                    }

                    Keys.onUpPressed: details.scrollBy(-details.stepSize)
                    Keys.onDownPressed: details.scrollBy(details.stepSize)
                    Keys.onPressed: event => {
                        if (event.key === Qt.Key_PageUp)
                            details.scrollBy(-details.height)
                        else if (event.key === Qt.Key_PageDown)
                            details.scrollBy(details.height)
                        else if (event.key === Qt.Key_Home)
                            details.positionViewAtBeginning()
                        else if (event.key === Qt.Key_End)
                            details.positionViewAtEnd()
                        else
                            return
                        event.accepted = true
                    }

                    readonly property real stepSize: page.font.pixelSize * 3

                    function scrollBy(distance: real) {
                        const top = details.originY
                        const bottom = Math.max(top, details.originY + details.contentHeight - details.height)
                        details.contentY = Math.max(top, Math.min(bottom, details.contentY + distance))
                    }
                }
            }
        }

        RowLayout {
            objectName: "notice"
            Layout.fillWidth: true
            visible: Plugins.restartNeeded

            Label {
                objectName: "noticeText"
                Layout.fillWidth: true
                text: qsTr("Changes apply at the next start.")
                wrapMode: Text.Wrap
                Accessible.name: text
            }
            Button {
                objectName: "restart"
                visible: page.offerRestart
                text: qsTr("Restart now")
                Accessible.name: text
                onClicked: {
                    page.restartRequested()
                    Plugins.requestRestart()
                }
            }
        }

        // The ways to the host's last start, and to the plugin bisect for a problem that
        // no error names; the same buttons, in the same words, as the widget's dialog.
        RowLayout {
            Layout.fillWidth: true

            Item {
                Layout.fillWidth: true
            }
            Button {
                objectName: "startup"
                text: qsTr("Start-up...")
                Accessible.name: qsTr("Start-up")
                onClicked: startupDialog.open()
            }
            Button {
                objectName: "findProblemPlugin"
                text: qsTr("Find a problem plugin...")
                Accessible.name: qsTr("Find a problem plugin")
                onClicked: bisectDialog.open()
            }
        }
    }

    // The bisect over the page, made afresh at every opening: where it is lives in the
    // settings. Each of its steps is a restart, which goes where "Restart now" goes.
    Dialog {
        id: bisectDialog

        objectName: "bisectDialog"
        parent: page
        width: page.width
        height: page.height
        modal: true
        focus: true
        title: bisectLoader.item ? (bisectLoader.item as BisectPage).title : ""
        standardButtons: Dialog.Close

        Loader {
            id: bisectLoader

            objectName: "bisectLoader"
            anchors.fill: parent
            active: bisectDialog.visible
            focus: true
            source: "BisectPage.qml"
            onLoaded: (bisectLoader.item as BisectPage).restartRequested.connect(page.bisectRestart)
        }
    }

    // The host's last start, read again at every opening: the profile changes only when
    // the host loads its plugins again.
    Dialog {
        id: startupDialog

        objectName: "startupDialog"
        parent: page
        width: page.width
        height: page.height
        modal: true
        focus: true
        title: startupLoader.item ? (startupLoader.item as StartupPage).title : ""
        standardButtons: Dialog.Close

        Loader {
            id: startupLoader

            objectName: "startupLoader"
            anchors.fill: parent
            active: startupDialog.visible
            source: "StartupPage.qml"
        }
    }

    function bisectRestart() {
        page.restartRequested()
        Plugins.requestRestart()
    }

    // A letter typed in a list goes to the filter, as in the widget.
    function typeIntoFilter(event: var) {
        if (event.text.length === 0 || event.text === " "
                || event.text.charCodeAt(0) < 32
                || (event.modifiers & (Qt.ControlModifier | Qt.AltModifier)))
            return
        filter.forceActiveFocus()
        filter.insert(filter.length, event.text)
        event.accepted = true
    }
}
