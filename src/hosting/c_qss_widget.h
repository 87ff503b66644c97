#pragma once

#include <QWidget>

/// A plain widget that paints the background and border its style sheet gives it, and goes on painting after
/// it was minimised and restored without a window frame. Application thread; owned by its parent or
/// WA_DeleteOnClose.
class CQssWidget : public QWidget
{
    Q_OBJECT

public:
    explicit CQssWidget(QWidget* parent = nullptr);

protected:
    void paintEvent(QPaintEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void changeEvent(QEvent* event) override;
};
