#include "Ferrobank/Model/CheckItemModel.h"

#include "support/TestProgram.h"

#include <QtTest/QAbstractItemModelTester>
#include <QtTest/QtTest>

using namespace Qt::StringLiterals;
using namespace ferrobank;

namespace {

using State = CheckItem::State;

CheckItem row(const QString& id, State state = State::Pending)
{
    return {.id = id, .title = id.toUpper(), .state = state, .detail = {}, .fix = {}, .action = {}};
}

QList<CheckItem> rowsOf(const QString& ids)
{
    QList<CheckItem> rows;
    for (const QChar id : ids) {
        rows.append(row(id));
    }
    return rows;
}

QString idsOf(const CheckItemModel& model)
{
    QString ids;
    for (const CheckItem& each : model.rows()) {
        ids += each.id;
    }
    return ids;
}

} // namespace

class CheckItemModelTest : public QObject {
    Q_OBJECT

private Q_SLOTS:

    void init()
    {
        _model = std::make_unique<CheckItemModel>();
        _tester = std::make_unique<QAbstractItemModelTester>(
            _model.get(), QAbstractItemModelTester::FailureReportingMode::QtTest);
        _changed = std::make_unique<QSignalSpy>(_model.get(), &QAbstractItemModel::dataChanged);
        _inserted = std::make_unique<QSignalSpy>(_model.get(), &QAbstractItemModel::rowsInserted);
        _removed = std::make_unique<QSignalSpy>(_model.get(), &QAbstractItemModel::rowsRemoved);
        _moved = std::make_unique<QSignalSpy>(_model.get(), &QAbstractItemModel::rowsMoved);
        _reset = std::make_unique<QSignalSpy>(_model.get(), &QAbstractItemModel::modelReset);
    }

    void cleanup()
    {
        QCOMPARE(_reset->count(), 0);
        _tester.reset();
        _model.reset();
    }

    void putAppendsAnUnknownId()
    {
        _model->replaceAll(rowsOf(u"ab"_s));
        QVERIFY(_model->put(row(u"c"_s)));
        QCOMPARE(idsOf(*_model), u"abc"_s);
        QCOMPARE(_changed->count(), 0);
    }

    void putReplacesAKnownIdInPlace()
    {
        _model->replaceAll(rowsOf(u"abc"_s));
        _inserted->clear();
        QVERIFY(_model->put(row(u"b"_s, State::Pass)));
        QCOMPARE(idsOf(*_model), u"abc"_s);
        QCOMPARE(_model->rows().at(1).state, State::Pass);
        QCOMPARE(_changed->count(), 1);
        QCOMPARE(_changed->at(0).at(0).toModelIndex().row(), 1);
        QCOMPARE(_inserted->count(), 0);
    }

    void puttingAnEqualRowIsSilent()
    {
        _model->replaceAll(rowsOf(u"abc"_s));
        QVERIFY(!_model->put(row(u"b"_s)));
        QCOMPARE(_changed->count(), 0);
    }

    void ofTwoRowsWithOneIdTheFirstCounts()
    {
        _model->replaceAll({row(u"a"_s), row(u"a"_s, State::Fail)});
        QVERIFY(_model->put(row(u"a"_s, State::Pass)));
        QCOMPARE(_model->rows().at(0).state, State::Pass);
        QCOMPARE(_model->rows().at(1).state, State::Fail);
        QCOMPARE(_model->find(u"a"_s), &_model->rows().at(0));
    }

    void appendNeverReplaces()
    {
        _model->replaceAll(rowsOf(u"ab"_s));
        QVERIFY(_model->append(row(u"a"_s, State::Fail)));
        QCOMPARE(idsOf(*_model), u"aba"_s);
        QCOMPARE(_model->find(u"a"_s)->state, State::Pending);
    }

    void replacingByAnEqualListIsSilent()
    {
        _model->replaceAll(rowsOf(u"abc"_s));
        _inserted->clear();
        QVERIFY(!_model->replaceAll(rowsOf(u"abc"_s)));
        QCOMPARE(_changed->count() + _inserted->count() + _removed->count() + _moved->count(), 0);
    }

    void rowsThatStayAreNotInsertedAgain()
    {
        _model->replaceAll({row(u"a"_s, State::Pass), row(u"b"_s, State::Fail), row(u"x"_s)});
        _inserted->clear();
        QVERIFY(_model->replaceAll(rowsOf(u"ab"_s)));
        QCOMPARE(idsOf(*_model), u"ab"_s);
        QCOMPARE(_changed->count(), 2);
        QCOMPARE(_inserted->count(), 0);
        QCOMPARE(_removed->count(), 1);
    }

    void replacingEndsInTheNewList_data()
    {
        QTest::addColumn<QString>("before");
        QTest::addColumn<QString>("after");
        QTest::addColumn<int>("insertions");
        QTest::newRow("from nothing") << QString() << u"abc"_s << 3;
        QTest::newRow("to nothing") << u"abc"_s << QString() << 0;
        QTest::newRow("last goes") << u"abcd"_s << u"abc"_s << 0;
        QTest::newRow("last comes") << u"abc"_s << u"abcd"_s << 1;
        QTest::newRow("middle goes") << u"abc"_s << u"ac"_s << 0;
        QTest::newRow("middle comes") << u"ac"_s << u"abc"_s << 1;
        QTest::newRow("reversed") << u"abcd"_s << u"dcba"_s << 0;
        QTest::newRow("nothing in common") << u"abc"_s << u"xyz"_s << 3;
        QTest::newRow("doubled") << u"ab"_s << u"aabb"_s << 2;
        QTest::newRow("no longer doubled") << u"aabb"_s << u"ab"_s << 0;
    }

    void replacingEndsInTheNewList()
    {
        QFETCH(const QString, before);
        QFETCH(const QString, after);
        _model->replaceAll(rowsOf(before));
        _inserted->clear();
        QVERIFY(_model->replaceAll(rowsOf(after)));
        QCOMPARE(idsOf(*_model), after);
        QTEST(static_cast<int>(_inserted->count()), "insertions");
        for (const QChar id : after) {
            QCOMPARE(_model->find(id)->id, QString(id));
        }
        QCOMPARE(_model->find(u"never"_s), nullptr);
        QCOMPARE(_model->countOf(State::Pending), after.size());
    }

    void statesAreCounted()
    {
        _model->replaceAll({row(u"a"_s, State::Pass), row(u"b"_s, State::Fail), row(u"c"_s, State::Pass)});
        QCOMPARE(_model->countOf(State::Pass), 2);
        _model->put(row(u"b"_s, State::Pass));
        QCOMPARE(_model->countOf(State::Pass), 3);
        QCOMPARE(_model->countOf(State::Fail), 0);
        _model->replaceAll({});
        QCOMPARE(_model->countOf(State::Pass), 0);
    }

    void absentTextsReadAsEmpty()
    {
        _model->append(row(u"a"_s));
        const QModelIndex index = _model->index(0);
        QCOMPARE(index.data(CheckItemModel::IdRole).toString(), u"a"_s);
        QCOMPARE(index.data(CheckItemModel::TitleRole).toString(), u"A"_s);
        QCOMPARE(index.data(CheckItemModel::StateRole).value<State>(), State::Pending);
        QCOMPARE(index.data(CheckItemModel::DetailRole), QVariant(QString()));
        QCOMPARE(index.data(CheckItemModel::HasDetailRole), QVariant(false));
        QCOMPARE(index.data(CheckItemModel::HasFixRole), QVariant(false));
        QCOMPARE(index.data(CheckItemModel::HasActionRole), QVariant(false));
    }

    void presentTextsAndTheActionCanBeRead()
    {
        CheckItem full = row(u"a"_s, State::Fail);
        full.detail = u"It is not running."_s;
        full.fix = u"Restart it."_s;
        full.action = FixAction::StorageSettings;
        _model->append(full);
        const QModelIndex index = _model->index(0);
        QCOMPARE(index.data(CheckItemModel::DetailRole).toString(), u"It is not running."_s);
        QCOMPARE(index.data(CheckItemModel::HasDetailRole), QVariant(true));
        QCOMPARE(index.data(CheckItemModel::FixRole).toString(), u"Restart it."_s);
        QCOMPARE(index.data(CheckItemModel::HasFixRole), QVariant(true));
        QCOMPARE(index.data(CheckItemModel::HasActionRole), QVariant(true));
        QCOMPARE(index.data(CheckItemModel::ActionRole).value<FixAction>(), FixAction::StorageSettings);
    }

    void anEmptyDetailIsNoDetail()
    {
        CheckItem empty = row(u"a"_s);
        empty.detail = QString();
        _model->append(empty);
        QCOMPARE(_model->index(0).data(CheckItemModel::HasDetailRole), QVariant(false));
    }

    void everyRoleHasAName()
    {
        QSet<QByteArray> names;
        for (int role = CheckItemModel::IdRole; role <= CheckItemModel::HasActionRole; ++role) {
            names.insert(_model->roleNames().value(role));
        }
        QCOMPARE(names.size(), CheckItemModel::HasActionRole - CheckItemModel::IdRole + 1);
        QVERIFY(!names.contains(QByteArray()));
    }

private:
    std::unique_ptr<CheckItemModel> _model;
    std::unique_ptr<QAbstractItemModelTester> _tester;
    std::unique_ptr<QSignalSpy> _changed;
    std::unique_ptr<QSignalSpy> _inserted;
    std::unique_ptr<QSignalSpy> _removed;
    std::unique_ptr<QSignalSpy> _moved;
    std::unique_ptr<QSignalSpy> _reset;
};

FERROBANK_TEST(CheckItemModelTest)
#include "CheckItemModelTest.moc"
