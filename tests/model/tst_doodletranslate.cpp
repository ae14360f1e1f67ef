// The text form of actions: encoding type by type, decoding of good
// and hostile text, round trips, the colour form and the log texts.
#include "LogCapture.h"

#include <doodle/model/DoodleTranslate.h>

#include <QElapsedTimer>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTest>

#include <clocale>
#include <functional>
#include <limits>

using ActionMaker = std::function<DoodleActionPtr()>;
Q_DECLARE_METATYPE(ActionMaker)

namespace {

const float inf = std::numeric_limits<float>::infinity();

DoodleActionPtr action(qint64 type, const QString &user = "u1")
{
    auto result = std::make_shared<DoodleAction>();
    result->setActionType(type);
    result->setUserId(user);
    return result;
}

DoodleActionPtr shape(qint64 type)
{
    auto result = action(type);
    result->setBrushColor(UIColorFromHexadecimalColor(0xFFFF0000));
    result->setBrushWidth(0.01f);
    result->setPageNumber(3);
    result->setX(0.1f);
    result->setY(-0.25f);
    result->setWidth(0.5f);
    result->setHeight(0.3f);
    result->setEndX(0.75f);
    result->setEndY(1.0f);
    result->setRotate(45);
    result->setText("hi\"you\"");
    result->setTextSize(0.04f);
    result->setUserDefined("ud");
    return result;
}

QJsonObject parse(const QString &text)
{
    return QJsonDocument::fromJson(text.toUtf8()).object();
}

// Every string that holds JSON becomes {"$json": parsed value}, so that an
// expectation states exactly which members travel as nested texts. Unmarked,
// it gives the same value with the nested texts inlined, as a careless
// sender would write it.
QJsonValue unnest(const QJsonValue &value, bool mark = true)
{
    if (value.isString()) {
        const QJsonDocument nested = QJsonDocument::fromJson(value.toString().toUtf8());
        if (!nested.isObject() && !nested.isArray())
            return value;
        const QJsonValue parsed = unnest(
            nested.isObject() ? QJsonValue(nested.object()) : QJsonValue(nested.array()), mark);
        return mark ? QJsonObject{{"$json", parsed}} : parsed;
    }
    if (value.isArray()) {
        QJsonArray result;
        for (const QJsonValue &element : value.toArray())
            result.append(unnest(element, mark));
        return result;
    }
    if (value.isObject()) {
        QJsonObject result;
        const QJsonObject object = value.toObject();
        for (auto it = object.begin(); it != object.end(); ++it)
            result.insert(it.key(), unnest(it.value(), mark));
        return result;
    }
    return value;
}

const char *header269 = R"({"$json":{"PelDoodleActionTypeKey":269,"PelDoodleUserUriKey":"u1",
    "PelDoodleBrushKey":{"PelDoodleColorKey":4294901760,"PelDoodleWidthKey":0.01},
    "PelDoodlePageIdKey":3}})";

} // namespace

class TestDoodleTranslate : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void encode_data();
    void encode();
    void exactText();
    void objToJsonAndBack();
    // Decoded fields of hand-written texts, good and hostile.
    void decode_data();
    void decode();
    // Every prefix of a valid text decodes to none or to an action, never crashes.
    void truncatedTexts();
    void bigInputsAreLinear();
    void logTexts();
    void colourForm_data();
    void colourForm();
    void colourRoundTrip();
};

void TestDoodleTranslate::initTestCase()
{
    // The second CTest run sets LC_ALL=de_DE.UTF-8: make sure it took effect.
    if (qgetenv("LC_ALL").startsWith("de_DE"))
        QCOMPARE(std::localeconv()->decimal_point, QByteArray(","));
}

void TestDoodleTranslate::encode_data()
{
    QTest::addColumn<ActionMaker>("make");
    QTest::addColumn<QString>("expected"); // nested texts as {"$json": ...}

    QTest::newRow("fresh") << ActionMaker([] { return std::make_shared<DoodleAction>(); })
                           << R"({"PelDoodlePageIdKey":0})";
    QTest::newRow("undo") << ActionMaker([] { return action(258); })
                          << R"({"PelDoodleActionTypeKey":258,"PelDoodleUserUriKey":"u1",
                                 "PelDoodlePageIdKey":0})";
    QTest::newRow("clean carries userDefined") << ActionMaker([] {
        auto a = action(259, "");
        a->setUserDefined("ud");
        a->setBrushWidth(0.5f);
        return a;
    }) << R"({"PelDoodleActionTypeKey":259,"PelDoodleBrushKey":{"PelDoodleWidthKey":0.5},
              "PelDoodlePageIdKey":0,"PelDoodleContentKey":"ud"})";
    QTest::newRow("263 carries userDefined as it is") << ActionMaker([] {
        auto a = action(263);
        a->setUserDefined("{\"a\":1}");
        return a;
    }) << R"({"PelDoodleActionTypeKey":263,"PelDoodleUserUriKey":"u1","PelDoodlePageIdKey":0,
              "PelDoodleContentKey":{"$json":{"a":1}}})";
    QTest::newRow("stroke without userDefined") << ActionMaker([] {
        auto a = shape(260);
        a->addPointWithPositionX(0.1f, 0.2f, 2);
        a->addPointWithPositionX(0.3f, 0.4f, 2);
        return a;
    }) << R"({"PelDoodleActionTypeKey":260,"PelDoodleUserUriKey":"u1","PelDoodlePageIdKey":3,
              "PelDoodleBrushKey":{"PelDoodleColorKey":4294901760,"PelDoodleWidthKey":0.01},
              "PelDoodlePositionKey":{"$json":[{"$json":["2","0.100000","0.200000"]},
                                               {"$json":["2","0.300000","0.400000"]}]}})";
    QTest::newRow("eraser without points")
        << ActionMaker([] { return action(261); }) << R"({"PelDoodleActionTypeKey":261,
        "PelDoodleUserUriKey":"u1","PelDoodlePageIdKey":0,"PelDoodlePositionKey":{"$json":[]}})";
    QTest::newRow("sticker") << ActionMaker([] {
        auto a = shape(262);
        a->setStickerUnicode("😀");
        a->setStickerName("");
        return a;
    })
                             << QString(R"({"PelDoodleActionTypeKey":262,"PelDoodleUserUriKey":"u1",
             "PelDoodlePageIdKey":3,
             "PelDoodleBrushKey":{"PelDoodleColorKey":4294901760,"PelDoodleWidthKey":0.01},
             "PelDoodleContentKey":{"$json":{"sticker_user_define":"ud","PelDoodleBrushKey":%1,
               "sticker_content":{"$json":{"emoji_unicode":"😀","name":"","x":0.1,"y":-0.25,
                 "width":0.5,"height":0.3,"rotate":45}}}}})")
                                    .arg(QString(header269).replace("269", "262"));
    QTest::newRow("text") << ActionMaker([] { return shape(267); })
                          << QString(R"({"PelDoodleActionTypeKey":267,
             "PelDoodleUserUriKey":"u1","PelDoodlePageIdKey":3,
             "PelDoodleBrushKey":{"PelDoodleColorKey":4294901760,"PelDoodleWidthKey":0.01},
             "PelDoodleContentKey":{"$json":{"sticker_user_define":"ud","PelDoodleBrushKey":%1,
               "text_content":{"$json":{"x":0.1,"y":-0.25,"text":"hi\"you\"",
                 "text_size":0.04,"rotate":45}}}}})")
                                 .arg(QString(header269).replace("269", "267"));
    QTest::newRow("rectangle") << ActionMaker([] { return shape(269); })
                               << QString(R"({"PelDoodleActionTypeKey":269,
             "PelDoodleUserUriKey":"u1","PelDoodlePageIdKey":3,
             "PelDoodleBrushKey":{"PelDoodleColorKey":4294901760,"PelDoodleWidthKey":0.01},
             "PelDoodleContentKey":{"$json":{"sticker_user_define":"ud","PelDoodleBrushKey":%1,
               "shape_content":{"$json":{"x":0.1,"y":-0.25,"width":0.5,"height":0.3,
                 "rotate":45}}}}})")
                                      .arg(header269);
    QTest::newRow("ellipse without userDefined") << ActionMaker([] {
        auto a = shape(268);
        a->setUserDefined("");
        a->setBrushColor(QColor());
        a->setBrushWidth(0);
        return a;
    }) << R"({"PelDoodleActionTypeKey":268,"PelDoodleUserUriKey":"u1","PelDoodlePageIdKey":3,
             "PelDoodleContentKey":{"$json":{"PelDoodleBrushKey":{"$json":{
                 "PelDoodleActionTypeKey":268,"PelDoodleUserUriKey":"u1","PelDoodlePageIdKey":3}},
               "shape_content":{"$json":{"x":0.1,"y":-0.25,"width":0.5,"height":0.3,
                 "rotate":45}}}}})";
    QTest::newRow("arrow") << ActionMaker([] { return shape(270); })
                           << QString(R"({"PelDoodleActionTypeKey":270,
             "PelDoodleUserUriKey":"u1","PelDoodlePageIdKey":3,
             "PelDoodleBrushKey":{"PelDoodleColorKey":4294901760,"PelDoodleWidthKey":0.01},
             "PelDoodleContentKey":{"$json":{"sticker_user_define":"ud","PelDoodleBrushKey":%1,
               "shape_content":{"$json":{"x":0.1,"y":-0.25,"width":0.5,"height":0.3,
                 "rotate":45,"end_x":0.75,"end_y":1}}}}})")
                                  .arg(QString(header269).replace("269", "270"));
    QTest::newRow("nan in detail empties that text only") << ActionMaker([] {
        auto a = action(269);
        a->setX(std::numeric_limits<float>::quiet_NaN());
        return a;
    }) << R"({"PelDoodleActionTypeKey":269,"PelDoodleUserUriKey":"u1","PelDoodlePageIdKey":0,
              "PelDoodleContentKey":{"$json":{"shape_content":"","PelDoodleBrushKey":{"$json":{
                "PelDoodleActionTypeKey":269,"PelDoodleUserUriKey":"u1",
                "PelDoodlePageIdKey":0}}}}})";
    QTest::newRow("huge page") << ActionMaker([] {
        auto a = action(258);
        a->setPageNumber(std::numeric_limits<quint64>::max());
        return a;
    }) << R"({"PelDoodleActionTypeKey":258,"PelDoodleUserUriKey":"u1",
              "PelDoodlePageIdKey":18446744073709551615})";
}

void TestDoodleTranslate::encode()
{
    QFETCH(ActionMaker, make);
    QFETCH(QString, expected);
    const QString text = DoodleTranslate::stringFromDoodleAction(make());
    const QJsonObject wanted = parse(expected);
    QVERIFY(!wanted.isEmpty());
    QCOMPARE(unnest(parse(text)), QJsonValue(wanted));
    // Compact, and floats in their shortest form.
    QVERIFY(!text.contains(' '));
    QVERIFY(!text.contains("0000001"));

    // Round trip: the decoded action encodes to the very same text, and a
    // sender that inlines the nested texts is read the same way. (A NaN
    // detail travels as "" and comes back as zeros; a 263 content is not
    // a nested text.)
    if (QByteArray(QTest::currentDataTag()).startsWith("nan"))
        return;
    const DoodleActionPtr decoded = DoodleTranslate::doodleActionFromString(text);
    QVERIFY(decoded);
    QCOMPARE(DoodleTranslate::stringFromDoodleAction(decoded), text);
    if (QByteArray(QTest::currentDataTag()).startsWith("263"))
        return;
    const QString inlined = DoodleTranslate::objToJson(unnest(parse(text), false));
    const DoodleActionPtr fromInlined = DoodleTranslate::doodleActionFromString(inlined);
    QVERIFY(fromInlined);
    QCOMPARE(DoodleTranslate::stringFromDoodleAction(fromInlined), text);
}

void TestDoodleTranslate::exactText()
{
    QCOMPARE(
        DoodleTranslate::stringFromDoodleAction(action(258)),
        QString(
            R"({"PelDoodleActionTypeKey":258,"PelDoodlePageIdKey":0,"PelDoodleUserUriKey":"u1"})"));
    auto stroke = action(260, "ü");
    stroke->setBrushWidth(0.1f);
    stroke->addPointWithPositionX(0.1f, 0.2f, 2);
    QCOMPARE(
        DoodleTranslate::stringFromDoodleAction(stroke),
        QString(
            R"({"PelDoodleActionTypeKey":260,"PelDoodleBrushKey":{"PelDoodleWidthKey":0.1},)"
            R"("PelDoodlePageIdKey":0,"PelDoodlePositionKey":)"
            R"("[\"[\\\"2\\\",\\\"0.100000\\\",\\\"0.200000\\\"]\"]","PelDoodleUserUriKey":"ü"})"));
    // An infinite width cannot be written: the whole text is "".
    stroke->setBrushWidth(inf);
    QCOMPARE(DoodleTranslate::stringFromDoodleAction(stroke), QString(""));
    QCOMPARE(DoodleTranslate::stringFromDoodleAction(nullptr), QString(""));
}

void TestDoodleTranslate::objToJsonAndBack()
{
    QCOMPARE(DoodleTranslate::objToJson(QJsonArray{1, "a", QJsonValue()}),
             QString("[1,\"a\",null]"));
    QCOMPARE(DoodleTranslate::objToJson(QJsonObject{{"a", QJsonArray{qQNaN()}}}), QString(""));
    QCOMPARE(DoodleTranslate::objToJson("text"), QString(""));
    QCOMPARE(DoodleTranslate::jsonToObj(42), QJsonValue(42));
    QCOMPARE(DoodleTranslate::jsonToObj("[1]"), QJsonValue(QJsonArray{1}));
    QVERIFY(DoodleTranslate::jsonToObj("[1").isUndefined());
}

void TestDoodleTranslate::decode_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("fields"); // "none" when decoding gives none
    QTest::newRow("empty") << ""
                           << "none";
    QTest::newRow("lone bracket") << "["
                                  << "none";
    QTest::newRow("top-level array") << "[{}]"
                                     << "none";
    QTest::newRow("top-level string") << "\"x\""
                                      << "none";
    QTest::newRow("truncated") << R"({"PelDoodleActionTypeKey":258,"PelDoodleUser)"
                               << "none";
    QTest::newRow("1e400 is refused by the parser") << R"({"PelDoodlePageIdKey":1e400})"
                                                    << "none";
    QTest::newRow("no members") << "{}"
                                << "0 null 0";
    QTest::newRow("colour and rotate") << R"({"PelDoodleActionTypeKey":269,
        "PelDoodleBrushKey":{"PelDoodleColorKey":2164195328,"PelDoodleWidthKey":0.5},
        "PelDoodleContentKey":"{\"shape_content\":\"{\\\"rotate\\\":45.9}\"}"})"
                                       << "269 null 0 w0.5 #80ff0000 r45";
    QTest::newRow("negative rotate") << R"({"PelDoodleActionTypeKey":268,
        "PelDoodleContentKey":{"shape_content":{"rotate":-45.9,"x":0.25}}})"
                                     << "268 null 0 x0.25 r-45";
    QTest::newRow("263 keeps the content string") << R"({"PelDoodleContentKey":"any",
        "PelDoodleActionTypeKey":263,"PelDoodleUserUriKey":"u"})"
                                                  << "263 u 0 ud:any";
    QTest::newRow("wrong types read as 0 or none")
        << R"({"PelDoodleActionTypeKey":"260","PelDoodleUserUriKey":5,
        "PelDoodlePageIdKey":"3","PelDoodleBrushKey":"{\"PelDoodleWidthKey\":1}",
        "PelDoodleContentKey":7})"
        << "0 null 0";
    QTest::newRow("wrong types inside") << R"({"PelDoodleActionTypeKey":270,
        "PelDoodleBrushKey":{"PelDoodleWidthKey":"1","PelDoodleColorKey":[1]},
        "PelDoodleContentKey":{"sticker_user_define":1,"shape_content":{"x":"1","end_x":0.5}}})"
                                        << "270 null 0 #00000000 ex0.5";
    QTest::newRow("huge numbers saturate") << R"({"PelDoodleActionTypeKey":1e300,
        "PelDoodlePageIdKey":1e300,"PelDoodleBrushKey":{"PelDoodleColorKey":1e20,
        "PelDoodleWidthKey":-1e300}})"
                                           << "9223372036854775807 null "
                                              "18446744073709551615 w-inf #ffffffff";
    QTest::newRow("negative page and colour") << R"({"PelDoodlePageIdKey":-5,
        "PelDoodleBrushKey":{"PelDoodleColorKey":-1.5}})"
                                              << "0 null 0 #00000000";
    QTest::newRow("huge rotate and width") << R"({"PelDoodleActionTypeKey":262,
        "PelDoodleContentKey":{"sticker_content":{"rotate":1e300,"width":1e39,"name":"n"}}})"
                                           << "262 null 0 winf r2147483647 n:n";
    QTest::newRow("points: strings, numbers, skipped kinds")
        << R"({"PelDoodleActionTypeKey":260,"PelDoodlePositionKey":[["2","0.1","0.2"],
        "[2,0.5,-1e-7]","[\"2\",true,\"1\"]","nonsense",{"a":1},["1"]]})"
        << "260 null 0 p2,0.1,0.2;2,0.5,-1e-07;1";
    QTest::newRow("point list not an array") << R"({"PelDoodleActionTypeKey":261,
        "PelDoodlePositionKey":"{\"a\":1}"})"
                                             << "261 null 0";
    QTest::newRow("points only for strokes") << R"({"PelDoodleActionTypeKey":258,
        "PelDoodlePositionKey":[["2","0","0"]]})"
                                             << "258 null 0";
    QTest::newRow("deep nesting in a member")
        << QString(R"({"PelDoodleActionTypeKey":260,"PelDoodlePositionKey":"%1"})")
               .arg(QString(100000, '['))
        << "260 null 0";
    QTest::newRow("deep nesting") << QString(100000, '[') << "none";
    QTest::newRow("deep objects") << QString(100000, '{') << "none";
}

void TestDoodleTranslate::decode()
{
    QFETCH(QString, text);
    QFETCH(QString, fields);
    const DoodleActionPtr a = DoodleTranslate::doodleActionFromString(text);
    if (!a) {
        QCOMPARE(QString("none"), fields);
        return;
    }
    QString got = QString("%1 %2 %3")
                      .arg(a->actionType())
                      .arg(a->userId().isNull() ? "null" : a->userId())
                      .arg(a->pageNumber());
    auto add = [&got](const QString &part) { got += ' ' + part; };
    if (a->brushWidth() != 0)
        add('w' + QString::number(a->brushWidth()));
    if (a->brushColor().isValid())
        add(QString("#%1").arg(HexadecimalColorFromUIColor(a->brushColor()), 8, 16, QChar('0')));
    if (a->x() != 0)
        add('x' + QString::number(a->x()));
    if (a->endX() != 0)
        add("ex" + QString::number(a->endX()));
    if (a->width() != 0)
        add('w' + QString::number(a->width()));
    if (a->rotate() != 0)
        add('r' + QString::number(a->rotate()));
    if (!a->stickerName().isNull())
        add("n:" + a->stickerName());
    if (!a->userDefined().isNull())
        add("ud:" + a->userDefined());
    QStringList points;
    for (const DoodlePoint &point : a->pathPoints())
        points.append(point.join(','));
    if (!points.isEmpty())
        add('p' + points.join(';'));
    QCOMPARE(got, fields);
}

void TestDoodleTranslate::truncatedTexts()
{
    const QString text = DoodleTranslate::stringFromDoodleAction(shape(270));
    for (qsizetype size = 0; size < text.size(); ++size)
        QVERIFY(!DoodleTranslate::doodleActionFromString(text.left(size)));
}

void TestDoodleTranslate::bigInputsAreLinear()
{
    auto stroke = action(260, QString(1 << 20, 'u'));
    const int count = 100000;
    for (int i = 0; i < count; ++i)
        stroke->pathPoints().append({"2", "0.123456", "-0.654321"});
    QLoggingCategory::setFilterRules("doodle.info=false");
    QElapsedTimer timer;
    timer.start();
    const QString text = DoodleTranslate::stringFromDoodleAction(stroke);
    const DoodleActionPtr decoded = DoodleTranslate::doodleActionFromString(text);
    QLoggingCategory::setFilterRules("doodle.info=true");
    QVERIFY(decoded);
    QCOMPARE(decoded->pathPoints().size(), count);
    QCOMPARE(decoded->userId().size(), 1 << 20);
    // A generous bound: quadratic work on 100 000 points would take minutes.
    QVERIFY2(timer.elapsed() < 20000, qPrintable(QString::number(timer.elapsed())));
}

void TestDoodleTranslate::logTexts()
{
    LogCapture capture;
    auto stroke = action(260);
    stroke->addPointWithPositionX(0, 0, 2);
    const QString strokeText = DoodleTranslate::stringFromDoodleAction(stroke);
    const QString pointText = parse(strokeText).value("PelDoodlePositionKey").toString();
    const QString rect = DoodleTranslate::stringFromDoodleAction(shape(269));
    const QString text = DoodleTranslate::stringFromDoodleAction(shape(267));
    DoodleTranslate::stringFromDoodleAction(shape(262));
    QCOMPARE(
        capture.lines(),
        QStringList(
            {"DoodleActionPelDoodlePositionKeyContent " + pointText,
             "DoodleActionRectContent " + parse(rect).value("PelDoodleContentKey").toString(),
             "DoodleActionTextContent " + parse(text).value("PelDoodleContentKey").toString()}));
    capture.clear();
    // The points are filled once for the position member and again for a
    // content member; nested arrays in place of texts are named as such.
    DoodleTranslate::doodleActionFromString(
        R"({"PelDoodleActionTypeKey":261,"PelDoodleContentKey":0,)"
        R"("PelDoodlePositionKey":["[]",[],1]})");
    const QStringList once{"jsonPath String", "jsonPath Array", "jsonPath Double"};
    QCOMPARE(capture.lines(), once + once);
}

void TestDoodleTranslate::colourForm_data()
{
    QTest::addColumn<QColor>("colour");
    QTest::addColumn<quint32>("value");
    QTest::newRow("invalid") << QColor() << 0u;
    QTest::newRow("grey white") << QColor::fromRgbF(1, 1, 1, 1) << 0xFFFFFFFFu;
    QTest::newRow("half truncates") << QColor::fromRgbF(0.5f, 0.5f, 0.5f, 0.5f) << 0x7F7F7F7Fu;
    QTest::newRow("extended range clamps")
        << QColor::fromRgbF(1.5f, -0.5f, 0.25f, 1.0f) << 0xFFFF003Fu;
    QTest::newRow("hsv") << QColor::fromHsv(120, 255, 255) << 0xFF00FF00u;
}

void TestDoodleTranslate::colourForm()
{
    QFETCH(QColor, colour);
    QFETCH(quint32, value);
    QCOMPARE(HexadecimalColorFromUIColor(colour), value);
}

void TestDoodleTranslate::colourRoundTrip()
{
    const QColor c = UIColorFromHexadecimalColor(0x80FF0000);
    QCOMPARE(c.redF(), 1.0f);
    QCOMPARE(c.greenF(), 0.0f);
    QCOMPARE(c.alphaF(), float(128 / 255.0));
    // Every byte of every channel comes back unchanged.
    QStringList failures;
    for (int shift : {0, 8, 16, 24}) {
        for (quint32 byte = 0; byte < 256; ++byte) {
            const quint32 value = (byte << shift) | (shift == 24 ? 0 : 0x80000000u);
            const quint32 back = HexadecimalColorFromUIColor(UIColorFromHexadecimalColor(value));
            if (back != value)
                failures.append(QString::number(value, 16));
        }
    }
    QCOMPARE(failures, QStringList());
}

QTEST_GUILESS_MAIN(TestDoodleTranslate)
#include "tst_doodletranslate.moc"
