// The plugin settings screen in QML, over the same PluginsModel as the widgets dialog.
// The host sets two context properties: pluginsModel (the controller's PluginsModel)
// and pluginCategories (a Zelvane::PluginsCaterogies, for the "Core" key).
// Plain QtQuick items only, so no Qt Quick Controls are needed.
import QtQuick

Rectangle {
    id: page

    width: 640
    height: 400
    color: "#f4f5f7"

    Text {
        id: title

        x: 16
        y: 12
        text: qsTr("Plugins")
        font.pixelSize: 20
        font.bold: true
        color: "#1d2430"
    }

    Text {
        id: note

        anchors.left: title.left
        anchors.right: parent.right
        anchors.rightMargin: 16
        anchors.top: title.bottom
        anchors.topMargin: 6
        wrapMode: Text.WordWrap
        color: "#4a5361"
        text: qsTr("Ticking a plugin also ticks the plugins it needs; clearing it clears the "
                   + "plugins that need it. Exactly one core plugin (round button) is used. "
                   + "Changes apply at the next start.")
    }

    ListView {
        id: list

        anchors.top: note.bottom
        anchors.topMargin: 10
        anchors.left: parent.left
        anchors.right: parent.right
        anchors.bottom: parent.bottom
        anchors.margins: 16
        clip: true
        spacing: 2
        model: pluginsModel

        delegate: Rectangle {
            id: row

            // Core rows act as one group of radio buttons: show them as such.
            readonly property bool core: model.category === pluginCategories.corePluginCategoryKey()

            width: ListView.view.width
            height: 46
            radius: 4
            color: mouse.containsMouse ? "#e4ecfb" : "#ffffff"
            border.color: "#d8dce3"

            Rectangle {
                id: box

                x: 12
                anchors.verticalCenter: parent.verticalCenter
                width: 18
                height: 18
                radius: row.core ? 9 : 3
                color: "#ffffff"
                border.color: model.checked ? "#2a6fdb" : "#6b7380"
                border.width: 2

                Rectangle {
                    anchors.centerIn: parent
                    width: 10
                    height: 10
                    radius: row.core ? 5 : 2
                    color: "#2a6fdb"
                    visible: model.checked
                }
            }

            Column {
                anchors.left: box.right
                anchors.leftMargin: 12
                anchors.right: parent.right
                anchors.rightMargin: 12
                anchors.verticalCenter: parent.verticalCenter
                spacing: 2

                Text {
                    // The model's font: bold when ticked, italic for core plugins.
                    font: model.font
                    text: row.core ? qsTr("%1 (core)").arg(model.name) : model.name
                    color: "#1d2430"
                    elide: Text.ElideRight
                    width: parent.width
                }
                Text {
                    text: model.description
                    color: "#5b6472"
                    font.pixelSize: 12
                    elide: Text.ElideRight
                    width: parent.width
                }
            }

            MouseArea {
                id: mouse

                anchors.fill: parent
                hoverEnabled: true
                // The model refuses what the rules forbid (clearing the ticked core
                // plugin) and spreads the rest along the dependencies.
                onClicked: model.checked = !model.checked
            }
        }
    }
}
