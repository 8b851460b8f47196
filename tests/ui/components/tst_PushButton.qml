import QtQuick
import QtTest
import Ferrobank

TestCase {
    id: test

    name: "PushButton"
    when: windowShown
    width: 300
    height: 200
    visible: true

    Component {
        id: maker

        PushButton { text: "Go" }
    }

    SignalSpy {
        id: clicks

        signalName: "clicked"
    }

    function make(properties: var): PushButton {
        const button = createTemporaryObject(maker, test, properties);
        clicks.target = button;
        clicks.clear();
        return button;
    }

    function test_aClickClicks() {
        mouseClick(make({}));
        compare(clicks.count, 1);
    }

    function test_spacePressesTheFocusedButton() {
        make({}).forceActiveFocus(Qt.TabFocusReason);
        keyClick(Qt.Key_Space);
        compare(clicks.count, 1);
    }

    function test_returnPressesTheFocusedButton() {
        make({}).forceActiveFocus(Qt.TabFocusReason);
        keyClick(Qt.Key_Return);
        compare(clicks.count, 1);
    }

    function test_returnPressesTheDefaultButtonWithoutFocus() {
        make({ defaultAction: true });
        keyClick(Qt.Key_Return);
        keyClick(Qt.Key_Enter);
        compare(clicks.count, 2);
    }

    function test_theFocusedButtonAnswersBeforeTheDefaultOne() {
        const standard = createTemporaryObject(maker, test, { y: 60, defaultAction: true });
        const other = make({});
        other.forceActiveFocus(Qt.TabFocusReason);
        keyClick(Qt.Key_Return);
        keyClick(Qt.Key_Enter);
        compare(clicks.count, 2);
        clicks.target = standard;
        clicks.clear();
        test.forceActiveFocus();
        keyClick(Qt.Key_Return);
        compare(clicks.count, 1);
    }

    function test_aPlainDefaultButtonLooksPlain() {
        const plain = make({});
        const standard = make({ y: 60, defaultAction: true });
        verify(Qt.colorEqual(standard.background.borderColor, plain.background.borderColor));
    }

    function test_escapePressesTheCancelButton() {
        make({ cancelAction: true });
        keyClick(Qt.Key_Escape);
        compare(clicks.count, 1);
    }

    function test_aHiddenDefaultButtonDoesNotAnswer() {
        make({ defaultAction: true, visible: false });
        keyClick(Qt.Key_Return);
        compare(clicks.count, 0);
    }

    function test_aDisabledButtonDoesNothing() {
        const button = make({ defaultAction: true, enabled: false });
        mouseClick(button);
        keyClick(Qt.Key_Return);
        compare(clicks.count, 0);
        compare(button.Accessible.description, "dimmed");
    }

    function test_theFocusRingShowsForTheKeyboardOnly() {
        const button = make({});
        mouseClick(button);
        verify(!button.visualFocus);
        button.forceActiveFocus(Qt.TabFocusReason);
        verify(button.visualFocus);
    }

    function test_looksDifferInFill() {
        const plain = make({});
        const prominent = make({ look: PushButton.Prominent });
        const destructive = make({ look: PushButton.Destructive });
        verify(!Qt.colorEqual(plain.fill, prominent.fill));
        verify(!Qt.colorEqual(prominent.fill, destructive.fill));
    }

    function test_itHasRoleAndName() {
        const button = make({ text: "Run Checks" });
        compare(button.Accessible.role, Accessible.Button);
        compare(button.Accessible.name, "Run Checks");
    }

    function test_aLongTitleWidensIt() {
        verify(make({ text: "Move Ferrobank to Trash" }).implicitWidth > make({ text: "Quit" }).implicitWidth);
    }
}
