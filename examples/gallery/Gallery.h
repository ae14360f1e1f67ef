#pragma once

#include <QWidget>

// One window with every tool bar and picker of the library on the two
// backgrounds a board has: a call's picture and a light page.
class Gallery : public QWidget
{
    Q_OBJECT
public:
    explicit Gallery(QWidget *parent = nullptr);

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    void addMainBars();
    void addPickers();
    void addHostControls();
    void addCaption(const QString &text, int x, int y);
};
