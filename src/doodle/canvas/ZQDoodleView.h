#pragma once

#include <doodle/DoodleExport.h>
#include <doodle/canvas/ZQDoodleDrawView.h>
#include <doodle/support/DoodleWeak.h>

#include <QColor>
#include <QImage>
#include <QList>
#include <QPointer>
#include <QWidget>

class QLineEdit;

// Told when the user finishes typing into the board's text field: with
// Return, or by moving on (the field loses the keyboard focus); or abandons
// it with Escape.
class DOODLE_EXPORT ZQDoodleViewDelegate
{
public:
    virtual ~ZQDoodleViewDelegate() = default;
    virtual void textEditDone(QLineEdit *textField) = 0;
    // Optional.
    virtual void textEditCancelled(QLineEdit * /*textField*/) {}
};

// The board: a background picture (fitted with its aspect ratio kept) under
// one permanent cache canvas and the temp canvases that show previews, plus
// the one-line text field for text annotations, which grows with its text up
// to the board's right edge.
class DOODLE_EXPORT ZQDoodleView : public QWidget
{
    Q_OBJECT
public:
    explicit ZQDoodleView(const QRect &frame = QRect(), const QImage &image = QImage(),
                          QWidget *parent = nullptr);

    ZQDoodleViewDelegate *delegate() const { return m_delegate.get(); }
    void setDelegate(ZQDoodleViewDelegate *delegate) { m_delegate = delegate; }

    // The colour under every layer.
    QColor backgroundColor() const { return m_backgroundColor; }
    void setBackgroundColor(const QColor &color);
    QImage backgroundImage() const { return m_backgroundImage; }
    void setBackgroundImage(const QImage &image);

    QWidget *backgroundView();
    ZQDoodleDrawView *cacheCanvas();
    // Kept for hosts that set it; the board itself never reads it.
    ZQDoodleDrawView *tempCanvas() const { return m_tempCanvas; }
    void setTempCanvas(ZQDoodleDrawView *canvas) { m_tempCanvas = canvas; }
    QLineEdit *tempTextField() const;
    QList<ZQDoodleDrawView *> tempCanvasArray() const { return m_tempCanvasArray; }

    // Adds temp canvases up to `count`; never removes any.
    void setTempCanvasCount(quint64 count);
    quint64 tempCanvasCount() const { return quint64(m_tempCanvasArray.size()); }
    // nullptr when the index is out of range.
    ZQDoodleDrawView *getTempCanvas(quint64 index) const;
    // Gives every layer the board's bounds.
    void layoutSubviews();

    // Temp members preview on temp canvas `index`; Catch (and Cache) members
    // clear it and draw permanently on the cache canvas.
    void drawInTempWithPath(const QPainterPath &path, double lineWidth, const QColor &lineColor,
                            quint64 index = 0);
    void drawInCacheWithPath(const QPainterPath &path, double lineWidth, const QColor &lineColor,
                             quint64 index = 0);
    void rectInTempWithPath(const QRectF &rect, double lineWidth, const QColor &lineColor,
                            quint64 index = 0);
    void rectInCatchWithPath(const QRectF &rect, double lineWidth, const QColor &lineColor,
                             quint64 index = 0);
    void ellipseInTempWithPath(const QRectF &rect, double lineWidth, const QColor &lineColor,
                               quint64 index = 0);
    void ellipseInCatchWithPath(const QRectF &rect, double lineWidth, const QColor &lineColor,
                                quint64 index = 0);
    void arrowInTempWithStartPoint(const QPointF &start, const QPointF &end, double lineWidth,
                                   const QColor &lineColor, quint64 index = 0);
    void arrowInCatchWithStartPoint(const QPointF &start, const QPointF &end, double lineWidth,
                                    const QColor &lineColor, quint64 index = 0);
    // Opens the text field at the point; the text argument is not used.
    void textInTempWithStartPoint(const QPointF &point, const QString &text, double textSize,
                                  const QColor &color, quint64 index = 0);
    void textInCatchWithStartPoint(const QPointF &point, const QString &text, double textSize,
                                   const QColor &color, quint64 index = 0);

    // Erases on the cache canvas only; the background picture stays.
    void eraseInCacheWithPath(const QPainterPath &path, double lineWidth);
    // Empties the cache canvas and every temp canvas; the background stays.
    void clearAll();
    // Draws a picture re-oriented by code: 1 right, 2 down, 3 left, else as is.
    void drawImageInCache(const QImage &image, const QRectF &rect, qint32 orientation);
    // A picture of the whole board at the screen scale.
    QImage convertViewToImage();

protected:
    void resizeEvent(QResizeEvent *event) override;
    void paintEvent(QPaintEvent *event) override;

private:
    void buildLayers();
    ZQDoodleDrawView *makeCanvas();
    void onTextFieldDone(QLineEdit *field, bool cancelled);
    // Temp canvas `index`, emptied (its memory kept for a redraw), or nullptr.
    ZQDoodleDrawView *cleanedTempCanvas(quint64 index, bool redraw);
    // The cache canvas with the board's current bounds.
    ZQDoodleDrawView *laidOutCacheCanvas();

    DoodleWeak<ZQDoodleViewDelegate> m_delegate;
    QColor m_backgroundColor;
    QImage m_backgroundImage;
    QWidget *m_backgroundView = nullptr;
    ZQDoodleDrawView *m_cacheCanvas = nullptr;
    QPointer<ZQDoodleDrawView> m_tempCanvas;
    QPointer<QLineEdit> m_tempTextField;
    QList<ZQDoodleDrawView *> m_tempCanvasArray;
};
