// The text form of actions: encoding, decoding of hostile text, round trips,
// colours and log texts.
#include "LogCapture.h"

#include <doodle/model/DoodleTranslate.h>

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>
#include <QTest>

#include <clocale>
#include <cmath>
#include <limits>

Q_DECLARE_METATYPE(DoodleActionPtr)
Q_DECLARE_METATYPE(DoodleColor)

namespace {

DoodleActionPtr action(qint64 type, const QString &user = "u1", quint64 page = 0)
{
    auto result = std::make_shared<DoodleAction>();
    result->setActionType(type);
    result->setUserId(user);
    result->setPageNumber(page);
    return result;
}

// Every field set: each encoding row shows which of them its type sends.
DoodleActionPtr shape(qint64 type)
{
    auto result = action(type, "u1", 3);
    result->setBrushColor(UIColorFromHexadecimalColor(0xFFFF0000));
    result->setBrushWidth(0.01f);
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
    result->setStickerUnicode("😀");
    result->setStickerName("");
    result->addPointWithPositionX(0.1f, 0.2f, 2);
    result->addPointWithPositionX(0.3f, 0.4f, 2);
    return result;
}

// Rows write "@Name" for the member "PelDoodleNameKey".
QString expand(QString row)
{
    return row.replace(QRegularExpression("@(\\w+)"), "PelDoodle\\1Key");
}

QString compact(const QJsonValue &value)
{
    return QString::fromUtf8(
        QJsonDocument::fromVariant(value.toVariant()).toJson(QJsonDocument::Compact));
}

// Rows write each nested text as {"$json": its value}. This gives the value as
// it must travel (nested) or inlined, as a careless sender would write it.
QJsonValue unmark(const QJsonValue &value, bool nested)
{
    if (value.isArray()) {
        QJsonArray result;
        for (const QJsonValue &element : value.toArray())
            result.append(unmark(element, nested));
        return result;
    }
    QJsonObject object = value.toObject();
    if (object.contains("$json")) {
        const QJsonValue inner = unmark(object.value("$json"), nested);
        return nested ? QJsonValue(compact(inner)) : inner;
    }
    for (auto it = object.begin(); it != object.end(); ++it)
        *it = unmark(*it, nested);
    return value.isObject() ? QJsonValue(object) : value;
}

QString wireText(const QString &row, bool nested)
{
    return compact(unmark(QJsonDocument::fromJson(expand(row).toUtf8()).object(), nested));
}

// Type, user and page, then the fields that are set, each with a prefix.
QString summary(const DoodleActionPtr &a)
{
    if (!a)
        return "none";
    QStringList points;
    for (const DoodlePoint &point : a->pathPoints())
        points.append('p' + point.toStringList().join(','));
    // Zero reads as "not set"; nine digits tell any two floats apart.
    const auto field = [](const char *prefix, double value) {
        return value != 0 ? prefix + QString::number(value, 'g', 9) : QString();
    };
    const DoodleColor colour = a->brushColor();
    const QString colourText = '#' + QString::number(HexadecimalColorFromUIColor(colour), 16);
    QStringList parts;
    parts.append({QString::number(a->actionType()), a->userId().isNull() ? "null" : a->userId(),
                  QString::number(a->pageNumber()), field("w", a->brushWidth()),
                  colour.isValid() ? colourText : "", field("x", a->x()), field("ex", a->endX()),
                  a->rotate() != 0 ? 'r' + QString::number(a->rotate()) : "",
                  a->userDefined().isNull() ? "" : "ud:" + a->userDefined(), points.join(' ')});
    return parts.join(' ').simplified();
}

} // namespace

class TestDoodleTranslate : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        // The second CTest run sets LC_ALL=de_DE.UTF-8: make sure it took effect.
        if (qgetenv("LC_ALL").startsWith("de_DE"))
            QCOMPARE(std::localeconv()->decimal_point, QByteArray(","));
    }

    void encode_data();
    void encode()
    {
        QFETCH(DoodleActionPtr, action);
        QFETCH(QString, logged);
        QFETCH(QString, expected);
        LogCapture capture;
        const QString text = DoodleTranslate::stringFromDoodleAction(action);
        QCOMPARE(text, wireText(expected, true));
        // The log line holds the one nested text at the top.
        const QJsonObject sent = QJsonDocument::fromJson(text.toUtf8()).object();
        const QString nested = sent.value("PelDoodlePositionKey").toString() +
                               sent.value("PelDoodleContentKey").toString();
        QCOMPARE(capture.lines(), logged.isEmpty() ? QStringList() : QStringList{logged + nested});
        // The decoded action encodes to the very same text, whether the nested
        // texts came as texts or inlined.
        for (const QString &received : {text, wireText(expected, false)}) {
            const DoodleActionPtr decoded = DoodleTranslate::doodleActionFromString(received);
            QVERIFY(decoded);
            QCOMPARE(DoodleTranslate::stringFromDoodleAction(decoded), text);
        }
    }

    void unwritable()
    {
        // A NaN detail member empties that nested text only.
        auto rect = shape(269);
        rect->setX(std::numeric_limits<float>::quiet_NaN());
        QVERIFY(DoodleTranslate::stringFromDoodleAction(rect).contains(
            R"(\"shape_content\":\"\",\"sticker_user_define\":\"ud\"})"));
        // An infinite header member cannot be written at all.
        rect->setBrushWidth(std::numeric_limits<float>::infinity());
        QCOMPARE(DoodleTranslate::stringFromDoodleAction(rect), QString(""));
        QCOMPARE(DoodleTranslate::stringFromDoodleAction(nullptr), QString(""));
    }

    void decode_data();
    void decode()
    {
        QFETCH(QString, text);
        QFETCH(QString, fields);
        QCOMPARE(summary(DoodleTranslate::doodleActionFromString(expand(text))), fields);
    }

    // Every field at an edge value comes back as sent; pages travel as exact
    // unsigned 64-bit integers, in the action and in the content's header.
    void edgeRoundTrip_data()
    {
        QTest::addColumn<float>("value");
        QTest::addColumn<quint64>("page");
        QTest::addColumn<qint32>("rotate");
        using F = std::numeric_limits<float>;
        using Page = std::numeric_limits<quint64>;
        QTest::newRow("largest") << F::max() << Page::max() << 45;
        QTest::newRow("lowest") << F::lowest() << Page::max() - 1 << -45;
        QTest::newRow("smallest normal")
            << F::min() << Q_UINT64_C(9223372036854775808) << std::numeric_limits<qint32>::min();
        QTest::newRow("subnormal") << -F::denorm_min() << Q_UINT64_C(9223372036854775807)
                                   << std::numeric_limits<qint32>::max() - 127;
        QTest::newRow("a third") << 1.0f / 3.0f << Q_UINT64_C(9007199254740993) << 359;
    }
    void edgeRoundTrip()
    {
        QFETCH(float, value);
        QFETCH(quint64, page);
        QFETCH(qint32, rotate);
        auto arrow = action(270, "u1", page);
        arrow->setBrushWidth(std::fabs(value));
        arrow->setRotate(rotate);
        for (auto set : {&DoodleAction::setX, &DoodleAction::setY, &DoodleAction::setEndX,
                         &DoodleAction::setEndY, &DoodleAction::setWidth, &DoodleAction::setHeight})
            ((*arrow).*set)(value);
        const QString text = DoodleTranslate::stringFromDoodleAction(arrow);
        QCOMPARE(text.count(QRegularExpression(QString(R"(PageIdKey[^:]*:%1\D)").arg(page))), 2);
        const DoodleActionPtr back = DoodleTranslate::doodleActionFromString(text);
        QVERIFY(back);
        const QList<float> sent{std::fabs(value), value, value, value, value, value, value};
        const QList<float> got{back->brushWidth(), back->x(),     back->y(),     back->endX(),
                               back->endY(),       back->width(), back->height()};
        QVERIFY2(got == sent, qPrintable(text));
        QCOMPARE(back->pageNumber(), page);
        QCOMPARE(back->rotate(), rotate);
    }

    void truncatedTexts()
    {
        const QString text = DoodleTranslate::stringFromDoodleAction(shape(270));
        for (qsizetype size = 0; size < text.size(); ++size)
            QVERIFY(!DoodleTranslate::doodleActionFromString(text.left(size)));
    }

    void pointLogTexts()
    {
        // Each element logs its JSON type, for the position member and again
        // for a content member.
        LogCapture capture;
        DoodleTranslate::doodleActionFromString(
            expand(R"({"@ActionType":261,"@Content":0,"@Position":["[]",[],1]})"));
        const QStringList once{"jsonPath String", "jsonPath Array", "jsonPath Double"};
        QCOMPARE(capture.lines(), once + once);
    }

    void colourForm_data()
    {
        QTest::addColumn<DoodleColor>("colour");
        QTest::addColumn<quint32>("value");
        const float nan = std::numeric_limits<float>::quiet_NaN();
        QTest::newRow("invalid") << DoodleColor() << 0u;
        QTest::newRow("half truncates")
            << DoodleColor::fromRgbF(0.5f, 0.5f, 0.5f, 0.5f) << 0x7F7F7F7Fu;
        // 0.00392 * 255 = 0.9996: a 16-bit channel would hold it as 1/255.
        QTest::newRow("floats, not 16-bit channels")
            << DoodleColor::fromRgbF(0.00392f, 0.00393f, 0.99999f, 0.00392f) << 0x000001FEu;
        QTest::newRow("extended range and nan clamp")
            << DoodleColor::fromRgbF(1.5f, -0.5f, 0.25f, nan) << 0x00FF003Fu;
        QTest::newRow("hsv QColor") << DoodleColor(QColor::fromHsv(120, 255, 255)) << 0xFF00FF00u;
        // Every byte in every channel comes back (odd factors run through all bytes).
        for (quint32 b = 0; b < 256; ++b) {
            const quint32 value =
                b << 24 | (b * 3 & 255) << 16 | (b * 5 & 255) << 8 | (b * 7 & 255);
            QTest::addRow("round trip %x", value) << UIColorFromHexadecimalColor(value) << value;
        }
    }
    void colourForm()
    {
        QFETCH(DoodleColor, colour);
        QFETCH(quint32, value);
        QCOMPARE(HexadecimalColorFromUIColor(colour), value);
        // The action keeps the colour as given and sends the same value.
        auto undo = action(258);
        undo->setBrushColor(colour);
        const QString brush = QString(R"("PelDoodleBrushKey":{"PelDoodleColorKey":%1})").arg(value);
        QCOMPARE(DoodleTranslate::stringFromDoodleAction(undo).contains(brush), colour.isValid());
    }
};

void TestDoodleTranslate::encode_data()
{
    QTest::addColumn<DoodleActionPtr>("action");
    QTest::addColumn<QString>("logged");   // the log line's title, if any
    QTest::addColumn<QString>("expected"); // nested texts as {"$json": ...}
    const auto row = [](const char *name, const DoodleActionPtr &action, const QString &logged,
                        const QString &expected) {
        QTest::newRow(name) << action << logged << expected;
    };
    // A content text repeats the header members: with shape(type), these.
    const QString content =
        QString(
            R"({%1,"@Content":{"$json":{"@Brush":{"$json":{%1}},"sticker_user_define":"ud",%2}}})")
            .arg(R"("@ActionType":%1,"@UserUri":"u1","@PageId":3,"@Brush":{"@Color":4294901760,)"
                 R"("@Width":0.01})");
    const QString rect = "DoodleActionRectContent ";
    const QString points = "DoodleActionPelDoodlePositionKeyContent ";
    row("fresh", std::make_shared<DoodleAction>(), "", R"({"@PageId":0})");
    row("clean carries userDefined", shape(259), "",
        R"({"@ActionType":259,"@UserUri":"u1","@PageId":3,"@Content":"ud","@Brush":)"
        R"({"@Color":4294901760,"@Width":0.01}})");
    row("stroke sends its points only", shape(260), points,
        R"({"@ActionType":260,"@UserUri":"u1","@PageId":3,"@Brush":{"@Color":4294901760,)"
        R"("@Width":0.01},"@Position":{"$json":[{"$json":["2","0.100000","0.200000"]},)"
        R"({"$json":["2","0.300000","0.400000"]}]}})");
    // Points in any other form travel on as they came, with or without a
    // point that needs escapes.
    const auto stroke = [](const QList<QStringList> &received) {
        auto result = action(260);
        for (const QStringList &point : received)
            result->pathPoints().append(point);
        return result;
    };
    row("stroke with points in other forms",
        stroke({{"2", "0.5", "1e-3"}, {"2", "0.100000", "-0.000000", "x\"\\"}, {}}), points,
        R"({"@ActionType":260,"@UserUri":"u1","@PageId":0,"@Position":{"$json":[)"
        R"({"$json":["2","0.5","1e-3"]},{"$json":["2","0.100000","-0.000000","x\"\\"]},)"
        R"({"$json":[]}]}})");
    row("stroke with received numbers only",
        stroke({{"2", "0.5", "1e-3"}, {"-0", "1.000000", "+1E2"}, {}}), points,
        R"({"@ActionType":260,"@UserUri":"u1","@PageId":0,"@Position":{"$json":[)"
        R"({"$json":["2","0.5","1e-3"]},{"$json":["-0","1.000000","+1E2"]},{"$json":[]}]}})");
    row("eraser without points or user", action(261, ""), points,
        R"({"@ActionType":261,"@PageId":0,"@Position":{"$json":[]}})");
    row("sticker", shape(262), "",
        content.arg(262).arg(R"("sticker_content":{"$json":{"emoji_unicode":"😀","name":"",)"
                             R"("x":0.1,"y":-0.25,"width":0.5,"height":0.3,"rotate":45}})"));
    row("text", shape(267), "DoodleActionTextContent ",
        content.arg(267).arg(R"("text_content":{"$json":{"x":0.1,"y":-0.25,"text":"hi\"you\"",)"
                             R"("text_size":0.04,"rotate":45}})"));
    row("arrow", shape(270), rect,
        content.arg(270).arg(R"("shape_content":{"$json":{"x":0.1,"y":-0.25,"width":0.5,)"
                             R"("height":0.3,"rotate":45,"end_x":0.75,"end_y":1}})"));
    row("ellipse without userDefined or brush", action(268), rect,
        R"({"@ActionType":268,"@UserUri":"u1","@PageId":0,"@Content":{"$json":{"@Brush":)"
        R"({"$json":{"@ActionType":268,"@UserUri":"u1","@PageId":0}},"shape_content":)"
        R"({"$json":{"x":0,"y":0,"width":0,"height":0,"rotate":0}}}}})");
}

void TestDoodleTranslate::decode_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("fields"); // as summary() writes them
    const auto row = [](const char *name, const QString &text, const QString &fields) {
        QTest::newRow(name) << text << fields;
    };
    row("not an object", "[{}]", "none");
    row("deep nesting in a nested text",
        QString(R"({"@ActionType":260,"@Position":"%1%2"})")
            .arg(QString("[").repeated(100000), QString("]").repeated(100000)),
        "260 null 0");
    row("colour, width, rotate truncated",
        R"({"@ActionType":269,"@Brush":{"@Color":2164195328,"@Width":0.5},)"
        R"("@Content":"{\"shape_content\":\"{\\\"rotate\\\":45.9}\"}"})",
        "269 null 0 w0.5 #80ff0000 r45");
    row("objects in place of nested texts",
        R"({"@ActionType":268,"@Content":{"shape_content":{"rotate":-45.9,"x":0.25}}})",
        "268 null 0 x0.25 r-45");
    row("wrong types read as 0 or none",
        R"({"@ActionType":"260","@UserUri":5,"@PageId":"3","@Brush":"{\"@Width\":1}","@Content":7})",
        "0 null 0");
    row("wrong types inside, negatives",
        R"({"@ActionType":270,"@PageId":-5,"@Brush":{"@Width":"1","@Color":-1.5},"@Content":)"
        R"({"sticker_user_define":1,"shape_content":{"x":"1","end_x":0.5}}})",
        "270 null 0 #0 ex0.5");
    row("huge numbers saturate",
        R"({"@ActionType":1e300,"@PageId":1e300,"@Brush":{"@Color":1e20,"@Width":-1e300}})",
        "9223372036854775807 null 18446744073709551615 w-inf #ffffffff");
    // Numbers are rounded to the nearest float; from the rounding boundary
    // above the largest float on they are infinite.
    row("floats: just below the boundary",
        R"({"@ActionType":267,"@Brush":{"@Width":3.4028235677973362e+38},"@Content":)"
        R"({"text_content":{"x":-3.4028235677973362e+38}}})",
        "267 null 0 w3.40282347e+38 x-3.40282347e+38");
    row("floats: the boundary rounds to infinity",
        R"({"@ActionType":267,"@Brush":{"@Width":3.4028235677973366e+38},"@Content":)"
        R"({"text_content":{"x":-3.4028235677973366e+38}}})",
        "267 null 0 winf x-inf");
    row("huge rotate and x",
        R"({"@ActionType":262,"@Content":{"sticker_content":{"rotate":1e300,"x":1e39}}})",
        "262 null 0 xinf r2147483647");
    row("points: strings, numbers, skipped kinds",
        R"({"@ActionType":260,"@Position":[["2","0.1","0.2"],"[2,0.5,-1e-7]",)"
        R"("[\"2\",true,\"1\"]","nonsense",{"a":1},["1"]]})",
        "260 null 0 p2,0.1,0.2 p2,0.5,-1e-07 p1");
    // Each of these read wrong gives the first page or a rounded one.
    row("page: byte order mark, spaces, the last of repeated members, escaped name",
        QChar(0xFEFF) +
            QString(R"({ "@PageId" : 18446744073709551614 , "PelDoodlePage\u0049dKey" : )"
                    R"(9223372036854775809 })"),
        "0 null 9223372036854775809");
    row("page: nested and quoted names are other members",
        R"({"@Brush":{"@PageId":1},"@UserUri":"\",\"@PageId\":2",)"
        R"("@PageId":18446744073709551612})",
        "0 \",\"PelDoodlePageIdKey\":2 18446744073709551612");
    row("page: beyond 64 bits saturates", R"({"@PageId":18446744073709551616})",
        "0 null 18446744073709551615");
    row("page: other number forms are read as doubles", R"({"@PageId":1.844674407370955e19})",
        "0 null 18446744073709549568");
    row("points only for strokes", R"({"@ActionType":258,"@Position":[["2","0","0"]]})",
        "258 null 0");
}

QTEST_GUILESS_MAIN(TestDoodleTranslate)
#include "tst_doodletranslate.moc"
