import QtQuick
import QtQuick.Window
import QtTest
import Ferrobank

TestCase {
    id: test

    name: "CheckList"
    when: windowShown
    width: 520
    height: 600
    visible: true

    ListModel {
        id: rows

        dynamicRoles: true
    }

    Component {
        id: maker

        CheckList {
            width: 520
            model: rows
        }
    }

    SignalSpy {
        id: wishes

        signalName: "fixWanted"
    }

    function add(properties: var): void {
        const row = Object.assign({ title: "Title", checkState: CheckItem.Pass, detail: "", hasDetail: false,
            fix: "", hasFix: false, action: FixActions.Restart, hasAction: false }, properties);
        rows.append(row);
    }

    function make(properties: var): CheckList {
        const list = createTemporaryObject(maker, test, properties);
        waitForRendering(list);
        wishes.target = list;
        wishes.clear();
        return list;
    }

    function child(list: CheckList, index: int, name: string): Item {
        return findChild(list.view.itemAtIndex(index), name);
    }

    function init() {
        rows.clear();
    }

    function test_rowsStandInOrderFourteenApart() {
        add({ title: "One" });
        add({ title: "Two" });
        const list = make({});
        const first = list.view.itemAtIndex(0);
        const second = list.view.itemAtIndex(1);
        compare(child(list, 0, "rowTitle").text, "One");
        compare(child(list, 1, "rowTitle").text, "Two");
        compare(second.y - (first.y + first.height), 14);
    }

    function test_theIconStandsInItsSlotBesideTheTitle() {
        add({});
        const list = make({});
        const icon = child(list, 0, "stateIcon");
        const title = child(list, 0, "rowTitle");
        compare(icon.width, 18);
        compare(icon.y, 3);
        const words = title.mapToItem(list, 0, 0);
        compare(words.x, 18 + 10);
        const middle = words.y + title.height / 2;
        verify(Math.abs(icon.y + icon.height / 2 - middle) <= 1);
    }

    function test_aDetailIsShownUnderTheTitle() {
        add({ detail: "Because.", hasDetail: true });
        const list = make({});
        verify(child(list, 0, "rowDetail").visible);
        verify(list.view.itemAtIndex(0).height > 30);
    }

    function test_withoutADetailThereIsNoBlankLine() {
        add({});
        add({ detail: "Because.", hasDetail: true });
        const list = make({});
        verify(!child(list, 0, "rowDetail").visible);
        verify(list.view.itemAtIndex(0).height < list.view.itemAtIndex(1).height);
    }

    function test_adviceIsOneMoreLineInEveryList() {
        add({ detail: "Because.", hasDetail: true, fix: "Do this.", hasFix: true });
        const list = make({});
        const advice = child(list, 0, "rowAdvice");
        verify(advice.visible);
        verify(advice.y > child(list, 0, "rowDetail").y);
    }

    function test_aListWithoutFixesNeverShowsButtons() {
        add({ checkState: CheckItem.Fail, hasAction: true });
        verify(!child(make({}), 0, "rowFix").visible);
    }

    function test_anActionShowsItsButtonInAnyState_data() {
        return [CheckItem.Pending, CheckItem.Running, CheckItem.AwaitingUser, CheckItem.Pass, CheckItem.Fail,
            CheckItem.Skipped].map(state => ({ tag: "state " + state, checkState: state }));
    }

    function test_anActionShowsItsButtonInAnyState(data: var) {
        add({ checkState: data.checkState, action: FixActions.StorageSettings, hasAction: true });
        const list = make({ offersFixes: true });
        const button = child(list, 0, "rowFix");
        verify(button.visible);
        compare(button.text, "Open Storage Settings");
        mouseClick(button);
        compare(wishes.count, 1);
        compare(wishes.signalArguments[0][0], FixActions.StorageSettings);
    }

    function test_aFailureWithoutActionHasNoButton() {
        add({ checkState: CheckItem.Fail });
        const list = make({ offersFixes: true });
        verify(!child(list, 0, "rowFix").visible);
        compare(child(list, 0, "stateIcon").symbol, "xmark.circle.fill");
    }

    function test_aRowKeepsItsPlaceWhenItsStateChanges() {
        add({ checkState: CheckItem.Running });
        const list = make({});
        const row = list.view.itemAtIndex(0);
        verify(child(list, 0, "stateIcon").running);
        rows.setProperty(0, "checkState", CheckItem.Pass);
        compare(list.view.itemAtIndex(0), row);
        compare(child(list, 0, "stateIcon").symbol, "checkmark.circle.fill");
    }

    function test_aRowTellsItsStateInWords() {
        add({ title: "Starts at login", checkState: CheckItem.AwaitingUser, detail: "Soon.", hasDetail: true });
        const row = make({}).view.itemAtIndex(0);
        compare(row.Accessible.role, Accessible.ListItem);
        compare(row.Accessible.name, "Starts at login: waiting for you");
        compare(row.Accessible.description, "Soon.");
    }

    function test_aChangedStateIsAnnounced() {
        add({ title: "Starts at login", checkState: CheckItem.Running });
        const list = make({});
        rows.setProperty(0, "checkState", CheckItem.Pass);
        const announcer = findChild(list, "announcer");
        compare(announcer.words, "Starts at login: passed");
        verify(announcer.visible);
    }

    function test_theListTakesTheHeightOfItsRows() {
        add({});
        add({ detail: "Because.", hasDetail: true });
        const list = make({});
        compare(list.height, list.view.contentHeight);
        verify(!list.view.interactive);
    }

    function test_tooManyRowsScroll() {
        for (let number = 0; number < 60; ++number)
            add({ title: "Row " + number });
        const list = make({ maximumHeight: 300 });
        compare(list.height, 300);
        verify(list.view.interactive);
    }

    function test_aListThatBecomesTooLongStaysAtItsBeginning() {
        add({ title: "Row 0", action: FixActions.Restart, hasAction: true });
        const list = make({ maximumHeight: 300, offersFixes: true });
        for (let index = 1; index < 40; ++index)
            add({ title: "Row " + index, action: FixActions.Restart, hasAction: true });
        tryCompare(list.view, "interactive", true);
        compare(list.view.contentY, list.view.originY - list.view.topMargin);
        verify(child(list, 0, "rowFix").mapToItem(list, 0, 0).y >= 0);
        rows.remove(1, 39);
        tryCompare(list.view, "interactive", false);
        compare(list.view.contentY, list.view.originY);
    }

    function test_theLastRowsButtonCanBeReachedByKeyboard() {
        for (let number = 0; number < 40; ++number)
            add({ title: "Row " + number, hasAction: number === 39 || number === 0 });
        const list = make({ maximumHeight: 300, offersFixes: true });
        child(list, 0, "rowFix").forceActiveFocus(Qt.TabFocusReason);
        list.view.positionViewAtEnd();
        const last = child(list, 39, "rowFix");
        last.forceActiveFocus(Qt.TabFocusReason);
        keyClick(Qt.Key_Return);
        compare(wishes.count, 1);
    }

    function test_theButtonThatGetsTheKeyboardScrollsIntoSight() {
        for (let number = 0; number < 30; ++number)
            add({ title: "Row " + number, hasAction: true });
        const list = make({ maximumHeight: 200, offersFixes: true });
        list.view.itemAtIndex(0).forceActiveFocus();
        for (let step = 0; step < 20; ++step)
            keyClick(Qt.Key_Tab);
        const focused = test.Window.window.activeFocusItem;
        compare(focused.objectName, "rowFix");
        const place = focused.mapToItem(list, 0, 0);
        verify(place.y >= -8 && place.y + focused.height <= list.height + 8);
        verify(list.view.contentY > 0);
    }

    function test_aListWithoutButtonsScrollsByKeyboard() {
        for (let number = 0; number < 60; ++number)
            add({ title: "Row " + number });
        const list = make({ maximumHeight: 200 });
        list.forceActiveFocus(Qt.TabFocusReason);
        const start = list.view.contentY;
        keyClick(Qt.Key_Down);
        verify(list.view.contentY > start);
        keyClick(Qt.Key_PageDown);
        verify(list.view.contentY > start + 150);
        keyClick(Qt.Key_PageUp);
        keyClick(Qt.Key_Up);
        compare(list.view.contentY, start);
    }

    function test_longWordsWrap() {
        add({ detail: "word ".repeat(60), hasDetail: true });
        add({ detail: "/" + "x".repeat(200), hasDetail: true });
        const list = make({});
        verify(child(list, 0, "rowDetail").lineCount > 2);
        verify(child(list, 1, "rowDetail").lineCount > 2);
        verify(child(list, 1, "rowDetail").contentWidth <= 520);
    }
}
