pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Zelvane

// The plugin bisect as a short guided flow: tick the plugins to keep on, start, and after
// each restart say whether the problem is still there, until the culprit is named; then
// look for another one or finish, which puts the user's own selection back (as does
// finishing at any earlier step). The words are PluginBisect's, as in the widget. Every
// step that needs a restart emits restartRequested(); after the restart a new page
// reads where the bisect is from the settings.
Pane {
    id: page

    readonly property string title: bisect.title
    property alias flow: bisect

    // The next step is set: the host should restart now.
    signal restartRequested()

    PluginBisectFlow {
        id: bisect
        pluginDirectory: Plugins.pluginDirectory
        onRestartRequested: page.restartRequested()
    }

    readonly property bool idle: bisect.state === PluginBisectFlow.Idle
    // The pins as a script array, for the rows' ticks.
    readonly property var pinnedNames: bisect.pinned

    ColumnLayout {
        anchors.fill: parent

        Label {
            objectName: "status"
            Layout.fillWidth: true
            text: bisect.statusText
            wrapMode: Text.Wrap
            Accessible.role: Accessible.StaticText
            Accessible.name: text
        }

        ListView {
            id: pins

            objectName: "pins"
            Layout.fillWidth: true
            Layout.fillHeight: true
            visible: page.idle
            clip: true
            model: bisect.candidates
            activeFocusOnTab: true
            keyNavigationEnabled: true
            Accessible.role: Accessible.List
            Accessible.name: bisect.pinListName

            // Space ticks the current plugin, as in a list of check boxes elsewhere.
            Keys.onSpacePressed: event => {
                if (pins.currentItem)
                    (pins.currentItem as CheckDelegate).toggle()
                event.accepted = true
            }

            delegate: CheckDelegate {
                id: pin

                required property string modelData
                required property int index

                objectName: "pin_" + modelData
                width: ListView.view.width
                text: modelData
                checked: page.pinnedNames.includes(pin.modelData)
                highlighted: ListView.isCurrentItem && ListView.view.activeFocus
                // The list takes the focus, so that Tab goes list, then buttons.
                activeFocusOnTab: false
                Accessible.role: Accessible.CheckBox
                Accessible.name: text
                onCheckedChanged: bisect.setPinnedPlugin(pin.modelData, pin.checked)
                onClicked: pin.ListView.view.currentIndex = pin.index
            }
        }

        // Keeps the buttons at the bottom once the list is gone.
        Item {
            Layout.fillHeight: true
            visible: !page.idle
        }

        RowLayout {
            Layout.fillWidth: true

            Item {
                Layout.fillWidth: true
            }
            Button {
                objectName: "start"
                visible: page.idle
                text: bisect.startText
                Accessible.name: text
                onClicked: bisect.start()
            }
            Button {
                objectName: "stillThere"
                visible: bisect.state === PluginBisectFlow.Testing
                text: bisect.stillThereText
                Accessible.name: text
                onClicked: bisect.answer(true)
            }
            Button {
                objectName: "gone"
                visible: bisect.state === PluginBisectFlow.Testing
                text: bisect.goneText
                Accessible.name: text
                onClicked: bisect.answer(false)
            }
            Button {
                objectName: "goOn"
                visible: bisect.state === PluginBisectFlow.Found
                text: bisect.goOnText
                Accessible.name: text
                onClicked: bisect.goOn()
            }
            Button {
                objectName: "finish"
                visible: !page.idle
                text: bisect.finishText
                Accessible.name: text
                onClicked: bisect.finish()
            }
        }
    }
}
