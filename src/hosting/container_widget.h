#pragma once

#include <QString>
#include <cstdint>
#include <string>
#include <utility>

#include "hosting/c_qss_widget.h"

class ModuleBase;
class QLabel;
class QPushButton;
class QScrollArea;
class QVBoxLayout;

namespace commui
{
class CTitleBarBase;
}
namespace panelry
{
class FrameOwner;
}

/// The frame that makes a module's widget a window: frameless, with a slim title bar, a title, a close
/// button, an optional clone button, and a scroll area that holds the widget. All looks come from a style
/// sheet with the object names as selectors, so the names are part of the interface.
///
/// Ownership: made by the container manager, which keeps it in its list; deletes itself when it is closed.
/// The
///   module's widget is lent: it is taken off the frame before the frame dies.
/// Threading: application thread.
/// Failures: a missing style sheet leaves the frame unstyled, silently.
class ContainerWidget : public CQssWidget
{
    Q_OBJECT

public:
    explicit ContainerWidget(QWidget* parent = nullptr);
    ~ContainerWidget() override;

    /// Who is told of the buttons and carries messages to the module; null until set, and then for life.
    void SetOwner(panelry::FrameOwner* owner) { m_owner = owner; }

    /// What ties the modules of this frame together. Never used again, unlike the frame's address.
    std::uintptr_t LinkKey() const { return m_linkKey; }

    /// Takes the module in: title, component id, size and flags from its widget's properties
    /// (hosting/widget_properties.h), and the widget itself.
    void SetModule(ModuleBase* module);

    /// The host's title: the label, unless `text` is empty, and "property_modulename" of the widget.
    void SetTitle(const QString& text);

    void SetCloneEnabled(bool enable);

    /// The module in this frame; null before SetModule() and once the frame is closing.
    ModuleBase* GetModule() const { return m_module; }
    /// The same, and the frame forgets it: nothing reaches the module through the frame from then on.
    ModuleBase* TakeModule() { return std::exchange(m_module, nullptr); }
    /// -1 until SetModule().
    std::int32_t GetComponentId() const { return m_componentId; }
    /// The module's widget, null without one.
    QWidget* ModuleWidget() const;

    // Messages to the module, if there is one; the text arrives as a UTF-8 `const char*`.
    void SendMessage(int cmd, std::string text);
    void SendInitData(std::string text);
    void SendPushData(std::string text);

    /// Applies the embedded sheet "<name>Theme"; an empty name means "White". An unknown name changes
    /// nothing.
    void LoadTheme(const QString& name);

    /// Takes the module's widget off the frame, hidden and without a parent.
    void ReleaseModuleWidget();

protected:
    bool event(QEvent* event) override;
    void showEvent(QShowEvent* event) override;

private Q_SLOTS:
    void OnCloseBtnClicked();
    void OnCloneBtnClicked();

private:
    void BuildUi();
    void BuildTitleBar();
    void ApplyProperties(QWidget* widget);
    void Embed(QWidget* widget);
    void LeaveManager();

    commui::CTitleBarBase* m_titleBar = nullptr;
    QLabel* m_titleLabel = nullptr;
    QPushButton* m_closeButton = nullptr;
    QPushButton* m_cloneButton = nullptr;
    QVBoxLayout* m_layout = nullptr;
    QScrollArea* m_scrollArea = nullptr;
    ModuleBase* m_module = nullptr;
    std::int32_t m_componentId = -1;

    panelry::FrameOwner* m_owner = nullptr;
    const std::uintptr_t m_linkKey;
    bool m_leaving = false;
};
