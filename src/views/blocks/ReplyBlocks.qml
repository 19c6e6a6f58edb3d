pragma ComponentBehavior: Bound

import QtQuick
import Qt.labs.qmlmodels
import Morvane
import Morvane.ViewModels

// The blocks of a reply, one below the other.
Item {
    id: root

    property alias text: blocks.text
    property bool finished: true
    // It was seen as it came, so nothing of it folds under the reader's eyes.
    property bool wasWatched: false
    // Known before a layout gives it, so that a new row has its height at once.
    required property real column
    property real wideColumn: column

    signal linkAsked(string address)
    signal copyAsked(string text)

    function startOver() {
        root.wasWatched = !root.finished;
    }

    Component.onCompleted: root.startOver()
    onFinishedChanged: if (!finished) wasWatched = true

    width: column
    implicitHeight: parts.implicitHeight

    ReplyBlocksModel {
        id: blocks

        growing: !root.finished
        onTextChanged: {
            parts.forceLayout();
            if (holding)
                patience.restart();
        }
    }
    Timer {
        id: patience

        interval: 160 // two of the moments in which a stored text reaches the window
        repeat: true
        running: blocks.holding
        onTriggered: blocks.showHeld()
    }
    Column {
        id: parts

        objectName: "replyBlocks"
        width: root.column
        spacing: Theme.gap12

        Repeater {
            model: blocks
            delegate: DelegateChooser {
                role: "kind"

                DelegateChoice {
                    roleValue: "paragraph"
                    ParagraphBlock {
                        growing: !root.finished
                        onLinkAsked: address => root.linkAsked(address)
                    }
                }
                DelegateChoice {
                    roleValue: "heading"
                    HeadingBlock { onLinkAsked: address => root.linkAsked(address) }
                }
                DelegateChoice {
                    roleValue: "bulletList"
                    ListBlock {
                        finished: root.finished
                        onLinkAsked: address => root.linkAsked(address)
                    }
                }
                DelegateChoice {
                    roleValue: "numberedList"
                    ListBlock {
                        finished: root.finished
                        onLinkAsked: address => root.linkAsked(address)
                    }
                }
                DelegateChoice {
                    roleValue: "quote"
                    QuoteBlock {
                        growing: !root.finished
                        onLinkAsked: address => root.linkAsked(address)
                    }
                }
                DelegateChoice {
                    roleValue: "code"
                    CodeBlock {
                        finished: root.finished
                        foldable: !root.wasWatched
                        onCopyAsked: text => root.copyAsked(text)
                    }
                }
                DelegateChoice {
                    roleValue: "table"
                    TableBlock {
                        room: root.wideColumn
                        onLinkAsked: address => root.linkAsked(address)
                        onCopyAsked: text => root.copyAsked(text)
                    }
                }
                DelegateChoice {
                    roleValue: "comparison"
                    ComparisonCard { onCopyAsked: text => root.copyAsked(text) }
                }
                DelegateChoice {
                    roleValue: "stats"
                    StatsCard {}
                }
                DelegateChoice {
                    roleValue: "facts"
                    FactsCard {}
                }
                DelegateChoice {
                    roleValue: "timeline"
                    TimelineCard {}
                }
                DelegateChoice {
                    roleValue: "chart"
                    ChartCard { room: root.wideColumn }
                }
                DelegateChoice {
                    roleValue: "market"
                    MarketCard {}
                }
                DelegateChoice {
                    roleValue: "weather"
                    WeatherCard {}
                }
                DelegateChoice {
                    roleValue: "divider"
                    DividerBlock {}
                }
            }
        }
        PushButton {
            objectName: "showMoreBlocks"
            visible: blocks.hiddenCount > 0
            text: qsTr("Show more of this reply")
            onClicked: blocks.showMore()
        }
    }
}
