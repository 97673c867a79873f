pragma ComponentBehavior: Bound
import QtQuick
import Velto

// The base of both scale pickers: a strip with ticks, labels, markers and mouse dragging.
Item {
    id: strip

    required property ScaleModel scaleModel
    property var value // the answer, undefined for none
    property var truth // the right answer, undefined for none
    required property real minorOpacity // of the minor ticks
    required property string name
    property bool answerable: true

    // The listener picks a value.
    signal picked(real value)

    readonly property var valueX: markerX(value)
    readonly property var truthX: markerX(truth)
    readonly property string description: {
        const own = value === undefined ? "" : scaleModel.spoken(value);
        return Words.spokenAnswer(own, truth === undefined ? "" : scaleModel.spoken(truth));
    }
    readonly property real pixelRatio: Screen.devicePixelRatio
    readonly property var ticks: scaleModel.ticks
    readonly property var labelledTicks: ticks.map((tick, index) => tick.label === "" ? -1 : index).filter(index => index >= 0)

    implicitHeight: AnswerLayout.areaHeight

    RoundedBox {
        objectName: "strip"
        width: parent.width
        height: AnswerLayout.stripHeight
        radius: 6
        color: Theme.palette.soft
        strokeColor: Theme.palette.line
        strokeWidth: 1
    }

    Repeater {
        model: strip.ticks

        Rectangle {
            required property int index
            required property var modelData

            objectName: "tick" + index
            x: AnswerLayout.tickLeft(strip.scaleModel.position(modelData.value, strip.width), strip.width, strip.pixelRatio)
            y: AnswerLayout.stripHeight - height
            // Qt would round a fractional width up to whole points.
            width: 1
            transform: Scale {
                xScale: AnswerLayout.tickWidth(strip.pixelRatio)
            }
            height: modelData.height
            color: modelData.major ? Theme.palette.muted : Palettes.faded(Theme.palette.faint, strip.minorOpacity)
        }
    }

    Repeater {
        model: strip.labelledTicks

        Label {
            required property int modelData // index of the tick
            readonly property var tick: strip.ticks[modelData]

            objectName: "tickLabel" + modelData
            x: strip.scaleModel.position(tick.value, strip.width) - strip.scaleModel.labelOffset
            y: AnswerLayout.stripHeight + 4
            text: tick.label
            size: 9
            color: Theme.palette.muted
        }
    }

    ScaleMarker {
        id: answerMarker

        objectName: "answerMarker"
        visible: strip.valueX !== undefined
        x: strip.valueX ?? 0
        barLeft: AnswerLayout.markerLeft(x, strip.pixelRatio)
        barWidth: AnswerLayout.markerWidth(strip.pixelRatio)
        text: strip.value === undefined ? "" : strip.scaleModel.text(strip.value)
        dimmed: !strip.answerable
        chipPlace: AnswerLayout.answerChip(strip.valueX, chipWidth, strip.truthX, truthMarker.chipWidth, strip.width, strip.pixelRatio)
    }

    ScaleMarker {
        id: truthMarker

        objectName: "truthMarker"
        visible: strip.truthX !== undefined
        x: strip.truthX ?? 0
        barLeft: AnswerLayout.markerLeft(x, strip.pixelRatio)
        barWidth: AnswerLayout.markerWidth(strip.pixelRatio)
        text: strip.truth === undefined ? "" : strip.scaleModel.text(strip.truth)
        isTruth: true
        chipPlace: AnswerLayout.truthChip(strip.valueX, answerMarker.chipWidth, strip.truthX, chipWidth, strip.width, strip.pixelRatio)
    }

    // Mouse, keys and assistive technology all call `pick`.
    ScaleHandle {
        id: handle

        objectName: "handle"
        width: parent.width
        height: AnswerLayout.stripHeight
        ringRadius: 6
        answer: strip.value ?? minimumValue
        minimumValue: strip.scaleModel.lowest
        maximumValue: strip.scaleModel.highest
        stepSize: strip.scaleModel.step
        onAsked: value => strip.pick(strip.scaleModel.nearest(value))
        onMoved: move => strip.pick(strip.scaleModel.moved(value, move))

        Accessible.role: Accessible.Slider
        Accessible.name: strip.name
        Accessible.description: strip.description
        Accessible.readOnly: !strip.answerable
        Accessible.onIncreaseAction: strip.pick(strip.scaleModel.increased(value))
        Accessible.onDecreaseAction: strip.pick(strip.scaleModel.decreased(value))

        MouseArea {
            anchors.fill: parent
            preventStealing: true
            onPressed: mouse => {
                handle.forceActiveFocus(Qt.MouseFocusReason);
                strip.pick(strip.scaleModel.valueAt(mouse.x, strip.width));
            }
            onPositionChanged: mouse => strip.pick(strip.scaleModel.valueAt(mouse.x, strip.width))
        }
    }

    // The position of a value's marker; undefined if there is none, or if it would be far off.
    function markerX(value: var): var {
        if (value === undefined)
            return undefined;
        const x = scaleModel.position(value, width);
        return x >= -width && x <= 2 * width ? x : undefined;
    }

    function pick(value: real) {
        if (answerable)
            picked(value);
    }
}
