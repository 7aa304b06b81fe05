pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Zelvane

// The "Start-up" page: how long the host's own last start took, one bar per plugin, the
// slowest first, each with its time and its share of the whole, under the total. The
// texts are the Diagnostics component's, as in the widget view.
Pane {
    id: page

    readonly property string title: qsTr("Start-up")
    property alias profile: profileModel

    StartupProfileModel {
        id: profileModel
    }

    ColumnLayout {
        anchors.fill: parent

        Label {
            objectName: "summary"
            Layout.fillWidth: true
            text: profileModel.summary
            wrapMode: Text.Wrap
            font.bold: true
            Accessible.name: text
        }

        ListView {
            objectName: "bars"
            Layout.fillWidth: true
            Layout.fillHeight: true
            clip: true
            spacing: 6
            model: profileModel

            delegate: ColumnLayout {
                id: bar

                required property string text
                required property real share
                required property string shareText
                required property bool failed

                width: ListView.view.width

                Label {
                    Layout.fillWidth: true
                    text: bar.text
                    color: bar.failed ? "firebrick" : palette.windowText
                    elide: Text.ElideRight
                    Accessible.name: text
                }
                ProgressBar {
                    Layout.fillWidth: true
                    from: 0
                    to: 100
                    value: bar.share
                    Accessible.name: bar.shareText
                }
            }
        }
    }
}
