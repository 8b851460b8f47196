import QtQuick
import QtTest
import Ferrobank

TestCase {
    id: test

    name: "Page"
    when: windowShown
    width: 520
    height: 400
    visible: true

    Component {
        id: maker

        Page {
            width: 520
            title: "Title"

            Rectangle {
                objectName: "body"
                width: parent.width
                height: 50
            }

            buttons: PushButton {
                objectName: "button"
                text: "Go"
            }
        }
    }

    Component {
        id: wide

        Page {
            width: 520
            title: "Title"
            buttons: [
                PushButton {
                    objectName: "first"
                    text: "A rather long title"
                },
                PushButton {
                    objectName: "hidden"
                    visible: false
                    text: "word ".repeat(40)
                },
                PushButton {
                    objectName: "second"
                    text: "Go"
                }
            ]
        }
    }

    Component {
        id: bare

        Page {
            width: 520
            title: "Title"
        }
    }

    function place(page: Item, name: string): rect {
        const item = findChild(page, name);
        return page.mapFromItem(item, 0, 0, item.width, item.height);
    }

    function test_blocksAreTwentyApart() {
        const page = createTemporaryObject(maker, test);
        const title = place(page, "pageTitle");
        const body = place(page, "body");
        const button = place(page, "button");
        fuzzyCompare(body.y - (title.y + title.height), 20, 0.01);
        fuzzyCompare(button.y - (body.y + body.height), 20, 0.01);
        compare(title.x, 0);
        compare(body.x, 0);
    }

    function test_theSubtitleIsSixBelowTheTitle() {
        const page = createTemporaryObject(maker, test, { subtitle: "Subtitle" });
        const title = place(page, "pageTitle");
        const subtitle = place(page, "pageSubtitle");
        fuzzyCompare(subtitle.y - (title.y + title.height), 6, 0.01);
    }

    function test_withoutASubtitleNoLineIsLeft() {
        const without = createTemporaryObject(maker, test);
        verify(!findChild(without, "pageSubtitle").visible);
        const withOne = createTemporaryObject(maker, test, { subtitle: "Subtitle" });
        verify(withOne.implicitHeight > without.implicitHeight + 6);
    }

    function test_aLongSubtitleWrapsWhole() {
        const page = createTemporaryObject(maker, test, { subtitle: "word ".repeat(80) });
        const subtitle = findChild(page, "pageSubtitle");
        verify(subtitle.lineCount > 3);
        verify(!subtitle.truncated);
    }

    function test_buttonsStandAtTheTrailingEdge() {
        const page = createTemporaryObject(maker, test);
        const button = place(page, "button");
        compare(button.x + button.width, 520);
    }

    function test_buttonsThatFitStandSideBySideTenApart() {
        const page = createTemporaryObject(wide, test);
        const first = place(page, "first");
        const second = place(page, "second");
        compare(first.y, second.y);
        compare(second.x - (first.x + first.width), 10);
        compare(second.x + second.width, 520);
    }

    function test_buttonsThatDoNotFitStandOneBelowTheOther() {
        const page = createTemporaryObject(wide, test);
        const before = page.implicitHeight;
        findChild(page, "second").text = "word ".repeat(12);
        tryVerify(() => place(page, "second").y > place(page, "first").y);
        const first = place(page, "first");
        const second = place(page, "second");
        compare(second.y, first.y + first.height + 8);
        compare(first.x + first.width, 520);
        compare(second.x + second.width, 520);
        verify(page.implicitHeight > before + 30);
    }

    function test_mirroredButtonsStandAtTheOtherEdge() {
        const page = createTemporaryObject(maker, test);
        page.LayoutMirroring.enabled = true;
        page.LayoutMirroring.childrenInherit = true;
        compare(place(page, "button").x, 0);
    }

    function test_aBarePageIsItsTitle() {
        const page = createTemporaryObject(bare, test);
        compare(page.implicitHeight, findChild(page, "pageTitle").height);
    }

    function test_theTitleIsAHeading() {
        const page = createTemporaryObject(maker, test);
        compare(findChild(page, "pageTitle").Accessible.role, Accessible.Heading);
    }
}
