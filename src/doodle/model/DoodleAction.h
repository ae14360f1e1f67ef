#pragma once

#include <doodle/DoodleExport.h>
#include <doodle/model/DoodleColor.h>
#include <doodle/model/DoodlePoint.h>

#include <QList>
#include <QString>
#include <QStringList>

#include <memory>

// Action type codes: the library's own wire values.
enum DoodleActionType : qint64
{
    DoodleActionTypeNone = 0,
    DoodleActionTypeUndo = 258,
    DoodleActionTypeClean = 259,
    DoodleActionTypeStroke = 260,
    DoodleActionTypeEraser = 261,
    DoodleActionTypeSticker = 262,
    DoodleActionTypeText = 267,
    DoodleActionTypeEllipse = 268,
    DoodleActionTypeRectangle = 269,
    DoodleActionTypeArrow = 270,
    // A gesture under way, outside the table above so that every other client
    // drops it: the points a stroke gained, a shape's current box or a laser's
    // track. Never cached, stamped or part of a state.
    DoodleActionTypeProgress = 280,
};

// Bits over (code - 258) for the codes 258 to 270 that are drawn and cached.
constexpr quint32 DoodleDrawnActionMask = 0x1E0C;

// True for the drawn actions: 260, 261, 267, 268, 269 and 270.
constexpr bool doodleIsDrawnActionType(qint64 code)
{
    return code >= 258 && code <= 270 && ((DoodleDrawnActionMask >> (code - 258)) & 1u) != 0;
}

// One operation on the shared board. A plain value holder: it never checks
// its fields against its type. Positions and sizes are normalised (-1 to 1).
class DOODLE_EXPORT DoodleAction
{
public:
    DoodleAction() = default;

    const DoodlePointList &points() const { return m_points; }
    void setPoints(const DoodlePointList &points) { m_points = points; }
    // The record's own point list, not a copy.
    DoodlePointList &pathPoints() { return m_points; }
    const DoodlePointList &pathPoints() const { return m_points; }

    qint64 actionType() const { return m_actionType; }
    void setActionType(qint64 type) { m_actionType = type; }
    QString userId() const { return m_userId; }
    void setUserId(const QString &userId) { m_userId = userId; }
    QString userDefined() const { return m_userDefined; }
    void setUserDefined(const QString &userDefined) { m_userDefined = userDefined; }
    // The order stamp (a Lamport clock; 0: none). For an undo, the stamp of the
    // drawing it takes back. Carried in a member that older clients ignore.
    quint64 seqNo() const { return m_seqNo; }
    void setSeqNo(quint64 stamp) { m_seqNo = stamp; }
    quint64 pageNumber() const { return m_pageNumber; }
    void setPageNumber(quint64 page) { m_pageNumber = page; }
    float brushWidth() const { return m_brushWidth; }
    void setBrushWidth(float width) { m_brushWidth = width; }
    // An invalid colour means none.
    DoodleColor brushColor() const { return m_brushColor; }
    void setBrushColor(const DoodleColor &color) { m_brushColor = color; }
    QString stickerUnicode() const { return m_stickerUnicode; }
    void setStickerUnicode(const QString &value) { m_stickerUnicode = value; }
    QString stickerName() const { return m_stickerName; }
    void setStickerName(const QString &value) { m_stickerName = value; }
    float x() const { return m_x; }
    void setX(float value) { m_x = value; }
    float y() const { return m_y; }
    void setY(float value) { m_y = value; }
    float endX() const { return m_endX; }
    void setEndX(float value) { m_endX = value; }
    float endY() const { return m_endY; }
    void setEndY(float value) { m_endY = value; }
    float width() const { return m_width; }
    void setWidth(float value) { m_width = value; }
    float height() const { return m_height; }
    void setHeight(float value) { m_height = value; }
    qint32 rotate() const { return m_rotate; }
    void setRotate(qint32 value) { m_rotate = value; }
    QString text() const { return m_text; }
    void setText(const QString &value) { m_text = value; }
    float textSize() const { return m_textSize; }
    void setTextSize(float value) { m_textSize = value; }

    // Appends one point; out-of-range values and negative intervals are
    // logged and stored all the same.
    void addPointWithPositionX(float x, float y, qint32 timeInterval);

private:
    DoodlePointList m_points;
    qint64 m_actionType = 0;
    QString m_userId;
    QString m_userDefined;
    quint64 m_pageNumber = 0;
    quint64 m_seqNo = 0;
    float m_brushWidth = 0;
    DoodleColor m_brushColor;
    QString m_stickerUnicode;
    QString m_stickerName;
    float m_x = 0;
    float m_y = 0;
    float m_endX = 0;
    float m_endY = 0;
    float m_width = 0;
    float m_height = 0;
    qint32 m_rotate = 0;
    QString m_text;
    float m_textSize = 0;
};

using DoodleActionPtr = std::shared_ptr<DoodleAction>;
