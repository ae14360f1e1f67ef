#pragma once

// The board's pictures as the Widgets front-end shows them: the board view's
// cache canvas and temp canvases, and its text field.
#include <doodle/board/DoodleBoardCanvas_p.h>
#include <doodle/canvas/ZQDoodleView.h>

#include <QPointer>

#include <functional>

class DoodleWidgetCanvas : public DoodleBoardCanvas
{
public:
    // `load` makes and returns the board view when there is none yet.
    DoodleWidgetCanvas(const QPointer<ZQDoodleView> &view, std::function<ZQDoodleView *()> load)
        : m_view(view), m_load(std::move(load))
    {}

    bool isShown() const override { return !m_view.isNull(); }
    QSizeF boardSize() const override;
    DoodleSurface &cacheSurface() override;
    DoodleSurface *previewSurface(quint64 index) override;
    void cleanPreview(quint64 index, bool release) override;
    void openTextEntry(const QPointF &point, double textSize, const QColor &color,
                       quint64 index) override;
    QString textEntryText() const override;

private:
    ZQDoodleDrawView *laidOutTemp(quint64 index);

    const QPointer<ZQDoodleView> &m_view;
    std::function<ZQDoodleView *()> m_load;
};
