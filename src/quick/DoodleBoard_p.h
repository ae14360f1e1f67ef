#pragma once

// The Quick board's private state: the board's core with a canvas of plain
// surfaces that the item paints, and the text input an entry opens.
#include "DoodleBoard.h"

#include <doodle/board/DoodleBoardCore_p.h>

#include <QPointer>

class DoodleQuickChrome;
class QQuickItem;

class DoodleQuickCanvas : public DoodleBoardCanvas
{
public:
    explicit DoodleQuickCanvas(DoodleBoard *item);

    bool isShown() const override { return !boardSize().isEmpty(); }
    QSizeF boardSize() const override;
    DoodleSurface &cacheSurface() override { return m_cache; }
    DoodleSurface *previewSurface(quint64 index) override;
    void cleanPreview(quint64 index, bool release) override;
    void openTextEntry(const QPointF &point, double textSize, const QColor &color,
                       quint64 index) override;
    QString textEntryText() const override;

    // Paints the cache and then the previews, in the item's points; a saved
    // picture leaves out the others' gestures under way and laser tracks.
    void paint(QPainter &painter, const QRect &area, bool live = true) const;

private:
    void prepare(DoodleSurface &surface);
    void closeTextEntry();

    DoodleBoard *m_item;
    DoodleSurface m_cache;
    // Previews, the text entry's, a stroke's tail, the others' previews, laser tracks.
    DoodleSurface m_previews[kDoodleLayerCount];
    QPointer<QQuickItem> m_textInput;
    quint64 m_textIndex = 0; // the preview the text entry is on
};

class DoodleBoardPrivate : public DoodleBoardCore
{
public:
    explicit DoodleBoardPrivate(DoodleBoard *item);

    // The undo and clear buttons follow the cache, once per turn of the event loop.
    void scheduleCommandUpdate() override;
    void updateCommandButtons();
    // Builds the bars once the board is complete and, from QML, in its engine.
    void ensureChrome();
    void actionGenerated(const DoodleActionPtr &action) override;
    void notifyCleared(const QString &userId) override;
    void notifyPictureSettled() override { emit q->pictureSettled(); }
    // Where the board sits in the item: all of it, or letterboxed to the aspect.
    QRect frame() const { return letterboxed(m_boardAspect, QRect(QPoint(), q->size().toSize())); }
    // The board's picture at that scale: its background, then the cache and
    // the previews pixel for pixel when the scale is the surfaces' own.
    QImage composed(double scale) const;
    // The picture the item shows, composed again where it changed.
    const QImage &frameImage(double scale);
    // Composes the item's area (points) of its picture into `image`.
    void compose(QImage &image, const QRect &area, bool live = true) const;
    // The item's area (points) changed and is shown again.
    void changed(const QRect &area);

    DoodleBoard *q;
    QColor m_backgroundColor = Qt::white;
    QString m_waterString;
    bool m_editable = true;
    bool m_confirmsClear = true;
    bool m_commandUpdatePending = false;
    QPointer<DoodleQuickChrome> m_chrome;
    QImage m_frame;          // the picture last shown
    QRect m_dirty;           // what changed since, in the item's points
    bool m_touching = false; // a gesture under way
    QPointF m_lastPoint;     // where it was at the previous event
};
