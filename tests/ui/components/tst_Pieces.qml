import QtQuick
import QtTest
import Ferrobank

/// The smaller components.
TestCase {
    id: test

    name: "Pieces"
    when: windowShown
    width: 520
    height: 300
    visible: true

    Component {
        id: tile

        Tile {
            width: 146
            label: "Files on drive"
            value: "48.6 GB"
        }
    }

    Component {
        id: figures

        FigureText {
            width: 300
            text: "888.8 GB"
            font: Theme.hero
        }
    }

    Component {
        id: settingsRow

        SettingsRow {
            width: 520

            Rectangle {
                objectName: "one"
                width: 50
                height: 10
            }

            Rectangle {
                objectName: "two"
                width: 50
                height: 10
            }
        }
    }

    Component {
        id: pill

        Pill {
            symbol: "clock.fill"
            text: "Starting…"
            tint: "#804000"
        }
    }

    Component {
        id: notice

        Notice {
            width: 300
            symbol: "key"
            text: "word ".repeat(40)
        }
    }

    Component {
        id: selectable

        SelectableText {
            width: 300
            text: "Some words"
        }
    }

    Component {
        id: spinner

        Spinner {}
    }

    Component {
        id: stateIcon

        StateIcon { checkState: CheckItem.Pending }
    }

    function test_aTileIsAGroupOfItsLabelAndHoldsItsValue() {
        const item = createTemporaryObject(tile, test);
        compare(item.Accessible.role, Accessible.Grouping);
        compare(item.Accessible.name, "Files on drive");
        compare(findChild(item, "value").Accessible.name, "48.6 GB");
        compare(item.radius, 12);
    }

    function test_theValueOfATileCanBeSelected() {
        const item = createTemporaryObject(tile, test);
        const value = findChild(item, "value");
        waitForRendering(item);
        mouseDoubleClickSequence(value, 8, value.height / 2);
        value.selectAll();
        compare(value.selectedText, "48.6 GB");
    }

    function test_theRestOfALineBelongsToTheBackground() {
        const words = createTemporaryObject(selectable, test);
        verify(words.contains(Qt.point(5, 5)));
        verify(!words.contains(Qt.point(words.contentWidth + 5, 5)));
        verify(!words.contains(Qt.point(-5, 5)));
        verify(!words.contains(Qt.point(5, -5)));
        verify(!words.contains(Qt.point(5, words.height + 5)));
        words.LayoutMirroring.enabled = true;
        verify(words.contains(Qt.point(295, 5)));
        verify(!words.contains(Qt.point(5, 5)));
    }

    function test_aShortValueKeepsItsSize() {
        const value = findChild(createTemporaryObject(tile, test), "value");
        compare(value.font, Theme.title2Figure);
    }

    function test_figuresOfARowShrinkTogetherAndNotBelowFourFifths() {
        const usual = Theme.title2Figure;
        const room = 120;
        compare(Theme.fitted(usual, ["1 GB", "2 GB"], room, 0.8), usual);
        const shared = Theme.fitted(usual, ["1 GB", "1,234,567,890,123.45 GB"], room, 0.8);
        compare(shared.pixelSize, Math.ceil(Theme.textScale * 17 * 0.8));
        const little = Theme.fitted(usual, ["1 GB", "234,567.89 GB"], room, 0.4);
        verify(little.pixelSize < Theme.textScale * 17);
    }

    function test_aFigureThatDoesNotFitEndsInAnEllipsis() {
        const item = createTemporaryObject(tile, test, { value: "1,234,567,890,123.45 GB" });
        const value = findChild(item, "value");
        waitForRendering(item);
        compare(value.lineCount, 1);
        verify(value.text.endsWith("…"));
        verify(value.contentWidth <= value.width);
        compare(value.Accessible.name, "1,234,567,890,123.45 GB");
    }

    function test_aFigureIsAsWideWhateverItsDigits() {
        const item = createTemporaryObject(figures, test);
        waitForRendering(item);
        const wide = item.contentWidth;
        for (const text of ["111.1 GB", "474.7 GB", "100.0 GB", "999.9 GB"]) {
            item.text = text;
            compare(item.contentWidth, wide, text);
        }
    }

    function test_aSettingsRowIsAtLeastTwentyEightHighInside() {
        const row = createTemporaryObject(settingsRow, test);
        compare(row.implicitHeight, 28 + 16);
        const one = findChild(row, "one");
        const two = findChild(row, "two");
        compare(row.mapFromItem(one, 0, 0).x, 16);
        compare(two.x - (one.x + one.width), 10);
    }

    function test_aPillIsPaddedAndOnItsOwnColour() {
        const item = createTemporaryObject(pill, test);
        verify(item.implicitWidth > 20);
        fuzzyCompare(item.color.a, 0.15, 0.01);
        compare(item.Accessible.name, "Starting…");
    }

    function test_aNoticeShowsItsWholeSentence() {
        const item = createTemporaryObject(notice, test);
        verify(item.implicitHeight > 60);
        compare(item.width, 300);
    }

    function test_aSpinnerStopsWhenHidden() {
        const item = createTemporaryObject(spinner, test);
        verify(item.stepping);
        item.visible = false;
        verify(!item.stepping);
        item.visible = true;
        verify(item.stepping);
    }

    function test_aSpinnerStandsStillUnderReducedMotion() {
        const item = createTemporaryObject(spinner, test);
        Theme.reducedMotion = true;
        verify(!item.stepping);
        Theme.reducedMotion = false;
        verify(item.stepping);
    }

    function test_aStateIconSpinsOnlyWhileRunning() {
        const item = createTemporaryObject(stateIcon, test);
        compare(item.symbol, "circle.dotted");
        verify(!item.running);
        item.checkState = CheckItem.Running;
        verify(item.running);
        verify(!findChild(item, "symbol").visible);
        compare(item.Accessible.name, "in progress");
    }

    function test_coloursFollowDarkAndBack() {
        const light = Theme.window.toString();
        Theme.dark = true;
        verify(Theme.window.toString() !== light);
        Theme.dark = false;
        compare(Theme.window.toString(), light);
    }

    function test_fontsKeepTheirProportions() {
        const body = Theme.body.pointSize;
        fuzzyCompare(Theme.title.pointSize / body, 22 / 13, 0.01);
        fuzzyCompare(Theme.title2Bold.pointSize / body, 17 / 13, 0.01);
        fuzzyCompare(Theme.callout.pointSize / body, 12 / 13, 0.01);
        fuzzyCompare(Theme.caption.pointSize / body, 10 / 13, 0.01);
        compare(Theme.hero.pixelSize, 52);
        compare(Theme.heroQuiet.pixelSize, 30);
    }
}
