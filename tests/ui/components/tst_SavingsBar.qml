import QtQuick
import QtTest
import Ferrobank

TestCase {
    id: test

    name: "SavingsBar"
    when: windowShown
    width: 400
    height: 50
    visible: true

    Component {
        id: maker

        SavingsBar { width: 400 }
    }

    function test_theSolidPartIsTheShare_data() {
        return [{ tag: "a quarter", fraction: 0.25, width: 100 }, { tag: "all", fraction: 1, width: 400 },
            { tag: "a trace", fraction: 0.0001, width: 8 }, { tag: "nothing", fraction: 0, width: 8 },
            { tag: "just eight", fraction: 0.02, width: 8 }];
    }

    function test_theSolidPartIsTheShare(data: var) {
        const bar = createTemporaryObject(maker, test, { fraction: data.fraction });
        compare(bar.height, 10);
        compare(findChild(bar, "solid").width, data.width);
    }

    function test_itGrowsFromTheLeadingEdge() {
        const bar = createTemporaryObject(maker, test, { fraction: 0.25 });
        compare(findChild(bar, "solid").x, 0);
        bar.LayoutMirroring.enabled = true;
        bar.LayoutMirroring.childrenInherit = true;
        compare(findChild(bar, "solid").x, 300);
    }

    function test_underReducedMotionItJumps() {
        const bar = createTemporaryObject(maker, test, { fraction: 0.25 });
        Theme.reducedMotion = true;
        bar.fraction = 0.5;
        compare(findChild(bar, "solid").width, 200);
        Theme.reducedMotion = false;
    }
}
