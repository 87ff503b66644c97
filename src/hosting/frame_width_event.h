#pragma once

#include <QEvent>

namespace panelry
{

/// Sent or posted by a module to its widget's window(): the frame takes the new width, its height stays.
class FrameWidthEvent : public QEvent
{
public:
    static constexpr Type kType = static_cast<Type>(User + 1);

    explicit FrameWidthEvent(int widthPixels) : QEvent(kType), m_width(widthPixels) {}

    int Width() const { return m_width; }

private:
    int m_width;
};

}  // namespace panelry
