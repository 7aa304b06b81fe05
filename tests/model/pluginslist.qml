import QtQuick

// A plugin list as a host's QML settings page shows it: a check box, the name in the
// row's font, the description, and which of the two category keys the row carries.
// Plain QtQuick items only. The host provides "pluginsModel" and "categories".
Rectangle {
    id: root

    readonly property string coreKey: categories.corePluginCategoryKey()
    readonly property string extensionKey: categories.extensionPluginCategoryKey()

    width: 520
    height: list.count * 40 + 16
    color: "white"

    ListView {
        id: list

        objectName: "list"
        x: 8
        y: 8
        width: parent.width - 16
        height: count * 40
        interactive: false
        model: pluginsModel

        delegate: Rectangle {
            id: row

            readonly property string pluginName: model.name
            readonly property string pluginDescription: model.description
            readonly property bool pluginChecked: model.checked
            readonly property string pluginCategory: model.category
            readonly property int pluginCheckedState: model.checkedState
            readonly property font pluginFont: model.font
            readonly property bool isCore: pluginCategory === categories.corePluginCategoryKey()
            readonly property bool isExtension: pluginCategory === categories.extensionPluginCategoryKey()

            function tick() {
                model.checked = true
            }

            width: ListView.view.width
            height: 40
            color: index % 2 ? "#f2f2f2" : "white"

            Rectangle {
                x: 8
                anchors.verticalCenter: parent.verticalCenter
                width: 18
                height: 18
                radius: 2
                border.color: "#555555"
                border.width: 1

                Rectangle {
                    anchors.fill: parent
                    anchors.margins: 4
                    color: "#202020"
                    visible: row.pluginCheckedState === Qt.Checked
                }
            }

            Text {
                x: 36
                width: 110
                anchors.verticalCenter: parent.verticalCenter
                text: row.pluginName
                font: row.pluginFont
            }

            Text {
                x: 150
                anchors.verticalCenter: parent.verticalCenter
                text: row.pluginDescription
                color: "#303030"
            }

            Text {
                anchors.right: parent.right
                anchors.rightMargin: 8
                anchors.verticalCenter: parent.verticalCenter
                text: row.isCore ? "core" : row.isExtension ? "extension" : "?"
                color: "#707070"
            }
        }
    }
}
