import QtQuick
import QtTest
import Ferrobank

TestCase {
    id: test

    name: "Toggle"
    when: windowShown
    width: 400
    height: 200
    visible: true

    Component {
        id: maker

        Toggle {
            width: 400
            text: "Open the Ferrobank menu at login"
        }
    }

    SignalSpy {
        id: toggles

        signalName: "toggled"
    }

    function make(properties: var): Toggle {
        const toggle = createTemporaryObject(maker, test, properties);
        toggles.target = toggle;
        toggles.clear();
        return toggle;
    }

    function test_aClickAnywhereOnItToggles() {
        const toggle = make({});
        mouseClick(toggle, 10, toggle.height / 2);
        verify(toggle.checked);
        mouseClick(toggle, toggle.width - 10, toggle.height / 2);
        verify(!toggle.checked);
        compare(toggles.count, 2);
    }

    function test_spaceToggles() {
        const toggle = make({});
        toggle.forceActiveFocus(Qt.TabFocusReason);
        keyClick(Qt.Key_Space);
        verify(toggle.checked);
    }

    function test_assistiveTechnologyTogglesAndIsHeard() {
        const toggle = make({});
        toggle.flip();
        verify(toggle.checked);
        compare(toggles.count, 1);
    }

    function test_aDisabledOneStays() {
        const toggle = make({ enabled: false });
        toggle.flip();
        mouseClick(toggle);
        verify(!toggle.checked);
        compare(toggle.Accessible.description, "dimmed");
    }

    function test_itTellsNameStateAndCaption() {
        const toggle = make({ caption: "Once.", checked: true });
        compare(toggle.Accessible.role, Accessible.CheckBox);
        compare(toggle.Accessible.name, "Open the Ferrobank menu at login");
        compare(toggle.Accessible.description, "Once.");
        verify(toggle.Accessible.checked);
    }

    function test_aCaptionTakesALineOfItsOwn() {
        const plain = make({}).implicitHeight;
        const toggle = make({ caption: "Adds a command." });
        tryVerify(() => toggle.implicitHeight > plain);
    }

    function test_aLongCaptionIsShownWhole() {
        const toggle = make({ width: 300, caption: "word ".repeat(30) });
        tryVerify(() => toggle.implicitHeight > 60);
        const words = toggle.contentItem;
        verify(words.childrenRect.height <= toggle.height);
    }

    function test_longWordsWrapBesideTheSwitch() {
        const toggle = make({ width: 160 });
        tryVerify(() => toggle.implicitHeight > 30);
    }
}
