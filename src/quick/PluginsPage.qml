pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Zelvane

// The plugin settings page: the controller's plugins grouped as Core (one choice) and
// Extensions, a filter, the details of the current plugin with the reasons the library
// gives, and a notice when the saved selection waits for a restart. Every tick goes to
// the model, which spreads it along the dependencies and saves it at once.
Pane {
    id: page

    // The name of the plugin that the details show.
    property string currentPlugin
    property alias filterText: filter.text
    // A file without a row (refused, or of another category) chosen below the list.
    property var currentOther: null
    readonly property var current: page.currentOther ? page.currentOther
                                                     : Plugins.details[page.currentPlugin]
    readonly property string coreKey: Plugins.categories ? Plugins.categories.corePluginCategoryKey() : ""
    property bool resetting: false
    // Whether the notice offers "Restart now": by default when the host offers a restart
    // (Plugins.restartOffered); a page whose own restartRequested() is handled sets it.
    property bool offerRestart: Plugins.restartOffered

    // The user asked to restart; Plugins.restartRequested() is emitted as well.
    signal restartRequested()

    function setChecked(row: int, checked: bool): bool {
        return plugins.setData(plugins.index(row, 0), checked, PluginsModel.CheckedRole)
    }

    function rowOf(name: string): int {
        for (let row = 0; row < plugins.rowCount(); ++row) {
            if (plugins.data(plugins.index(row, 0), PluginsModel.NameRole) === name)
                return row
        }
        return -1
    }

    function needsText(plugin: var): string {
        if (!plugin || plugin.dependencies.length === 0)
            return qsTr("nothing")
        return plugin.dependencies.map(dependency => dependency.missing
                                       ? qsTr("%1 (missing)").arg(dependency.name)
                                       : dependency.name).join(", ")
    }

    function optionsText(plugin: var): string {
        if (!plugin)
            return ""
        return plugin.options.map(option => option.synopsis + "  " + option.description).join("\n")
    }

    Accessible.name: qsTr("Plugins")

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
            Keys.onDownPressed: {
                list.forceActiveFocus()
                if (list.currentIndex < 0 && list.count > 0)
                    list.currentIndex = 0
            }
        }

        RowLayout {
            Layout.fillWidth: true
            Layout.fillHeight: true

            ColumnLayout {
                Layout.fillHeight: true
                Layout.preferredWidth: page.width * 0.4

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
                    Accessible.name: qsTr("Plugins")
                    Accessible.role: Accessible.List

                    section.property: "category"
                    section.delegate: Label {
                        id: sectionLabel
                        required property string section
                        text: sectionLabel.section === page.coreKey ? qsTr("Core") : qsTr("Extensions")
                        font.bold: true
                        topPadding: 6
                        Accessible.name: text
                    }

                    delegate: Rectangle {
                        id: row

                        required property int index
                        required property string name
                        required property string description
                        required property string category
                        required property bool checked
                        readonly property bool isCore: row.category === page.coreKey

                        width: ListView.view.width
                        implicitHeight: Math.max(check.implicitHeight, radio.implicitHeight)
                        color: ListView.isCurrentItem ? page.palette.highlight : "transparent"
                        Accessible.role: row.isCore ? Accessible.RadioButton : Accessible.CheckBox
                        Accessible.name: row.name
                        Accessible.description: row.description
                        Accessible.checkable: true
                        Accessible.checked: row.checked

                        CheckBox {
                            id: check
                            visible: !row.isCore
                            text: row.name
                            checked: row.checked
                            onToggled: {
                                list.currentIndex = row.index
                                page.setChecked(row.index, check.checked)
                                list.forceActiveFocus()
                            }
                        }
                        RadioButton {
                            id: radio
                            visible: row.isCore
                            text: row.name
                            checked: row.checked
                            font.italic: true
                            onToggled: {
                                list.currentIndex = row.index
                                page.setChecked(row.index, true)
                                list.forceActiveFocus()
                            }
                        }
                        TapHandler {
                            onTapped: {
                                list.currentIndex = row.index
                                list.forceActiveFocus()
                            }
                        }
                    }

                    onCurrentIndexChanged: {
                        if (page.resetting || list.currentIndex < 0)
                            return
                        page.currentOther = null
                        page.currentPlugin = plugins.data(plugins.index(list.currentIndex, 0),
                                                          PluginsModel.NameRole)
                    }
                    Keys.onSpacePressed: {
                        if (list.currentIndex < 0)
                            return
                        const index = plugins.index(list.currentIndex, 0)
                        const isCore = plugins.data(index, PluginsModel.CategoryRole) === page.coreKey
                        page.setChecked(list.currentIndex,
                                        isCore || !plugins.data(index, PluginsModel.CheckedRole))
                    }
                    // Typing filters.
                    Keys.onPressed: event => {
                        if (event.text.length === 0 || event.text === " "
                                || event.text.charCodeAt(0) < 32
                                || (event.modifiers & (Qt.ControlModifier | Qt.AltModifier)))
                            return
                        filter.forceActiveFocus()
                        filter.insert(filter.length, event.text)
                        event.accepted = true
                    }
                }

                Label {
                    visible: Plugins.otherFiles.length > 0
                    text: qsTr("Other files")
                    font.bold: true
                }
                Repeater {
                    model: Plugins.otherFiles
                    delegate: ItemDelegate {
                        id: other
                        required property var modelData
                        Layout.fillWidth: true
                        text: other.modelData.name.length > 0 ? other.modelData.name
                                                              : other.modelData.fileName
                        Accessible.name: other.text
                        onClicked: page.currentOther = other.modelData
                    }
                }
            }

            ScrollView {
                id: details
                objectName: "details"
                Layout.fillWidth: true
                Layout.fillHeight: true
                Accessible.name: qsTr("Plugin details")

                ColumnLayout {
                    width: details.availableWidth
                    spacing: 6

                    Label {
                        objectName: "detailsName"
                        Layout.fillWidth: true
                        text: page.current ? (page.current.name.length > 0 ? page.current.name
                                                                            : page.current.fileName)
                                           : qsTr("No plugin is selected.")
                        font.bold: true
                        wrapMode: Text.Wrap
                    }
                    Label {
                        objectName: "detailsDescription"
                        Layout.fillWidth: true
                        visible: text.length > 0
                        text: page.current ? page.current.description : ""
                        wrapMode: Text.Wrap
                    }
                    Label {
                        objectName: "detailsState"
                        Layout.fillWidth: true
                        visible: page.current !== undefined && page.current !== null
                        text: page.current ? qsTr("State: %1").arg(page.current.stateText) : ""
                        wrapMode: Text.Wrap
                    }
                    Label {
                        objectName: "detailsProblems"
                        Layout.fillWidth: true
                        visible: text.length > 0
                        text: page.current ? page.current.problems.join("\n") : ""
                        wrapMode: Text.Wrap
                    }
                    Label {
                        objectName: "detailsNeeds"
                        Layout.fillWidth: true
                        visible: page.current !== undefined && page.current !== null
                        text: qsTr("Needs: %1").arg(page.needsText(page.current))
                        wrapMode: Text.Wrap
                    }
                    Label {
                        objectName: "detailsNeededBy"
                        Layout.fillWidth: true
                        visible: page.current !== undefined && page.current !== null
                        text: qsTr("Needed by: %1").arg(page.current && page.current.dependants.length > 0
                                                        ? page.current.dependants.join(", ")
                                                        : qsTr("nothing"))
                        wrapMode: Text.Wrap
                    }
                    Label {
                        objectName: "detailsOptions"
                        Layout.fillWidth: true
                        visible: page.optionsText(page.current).length > 0
                        text: qsTr("Command-line options:") + "\n" + page.optionsText(page.current)
                        wrapMode: Text.Wrap
                    }
                    Label {
                        objectName: "detailsFile"
                        Layout.fillWidth: true
                        visible: page.current !== undefined && page.current !== null
                        text: page.current ? qsTr("File: %1").arg(page.current.filePath) : ""
                        wrapMode: Text.WrapAnywhere
                    }
                }
            }
        }

        RowLayout {
            objectName: "notice"
            Layout.fillWidth: true
            visible: Plugins.restartNeeded

            Label {
                Layout.fillWidth: true
                text: qsTr("Changes apply at the next start.")
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
    }
}
