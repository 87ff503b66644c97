// The other half of ContainerManager: how windows come onto its list and leave it.

#include <QGuiApplication>
#include <QPoint>
#include <QScreen>
#include <QVariant>
#include <QWidget>
#include <algorithm>

#include "bridge/color_table.h"
#include "bridge/config_store.h"
#include "bridge/host_values.h"
#include "hosting/container_manager.h"
#include "hosting/container_widget.h"
#include "hosting/event_filter.h"
#include "hosting/host_call.h"
#include "hosting/operate_message.h"
#include "hosting/plugin_manager.h"
#include "hosting/widget_properties.h"
#include "services/module_base.h"
#include "services/records.h"

namespace
{

constexpr std::size_t kMostWindows = 10;  // of one component, by the clone button
constexpr int kCloneGap = 10;
constexpr int kCloneStep = 10;

int WidthOfAllScreens()
{
    int width = 0;
    for (const QScreen* screen : QGuiApplication::screens()) {
        width += screen->geometry().width();
    }
    return width;
}

}  // namespace

void ContainerManager::CreateContainer(int nComponentId, ContainerWidget* source, const std::string& text)
{
    const panelry::CreationMessage message = panelry::ReadCreationMessage(text);
    const std::string creationText =
        panelry::CreationText(message, source ? source->ModuleWidget() : nullptr);
    const QPointer<ContainerWidget> sourceFrame = source;  // foreign code runs from here on
    const QPointer<ContainerWidget> frame = message.needWrapper ? new ContainerWidget : nullptr;

    const std::shared_ptr<ModuleBase> module = MakeModule(nComponentId, frame, creationText);
    if (!module) {
        delete frame;
        RefreshCloneButtons(nComponentId);
        return;
    }
    if (frame) {
        frame->SetOwner(this);
        frame->SetModule(module.get());
        if (sourceFrame) {
            PlaceClone(nComponentId, *frame, *sourceFrame);
        }
    } else if (QWidget* const widget = module->GetWidget()) {
        (new EventFilter(this))->Watch(widget);  // a frame watches for itself
    }
    QObject* const bare = MarkModule(nComponentId, *module, message);
    const bool shows = module->GetWidget() != nullptr;
    const QPointer<QObject> entry = shows && frame ? frame.data() : bare;
    if (!shows) {
        delete frame;  // the module stays, without a frame
    }
    AskForTitle(nComponentId, frame);
    if (auto* const window = qobject_cast<QWidget*>(entry.data())) {
        window->setVisible(message.needDisplay);
        window->raise();
    }
    if (IsOpen(entry)) {  // the panel may have closed itself as it came up
        m_containers[nComponentId].push_back(entry);
    }
    RefreshCloneButtons(nComponentId);
}

std::shared_ptr<ModuleBase> ContainerManager::MakeModule(int nComponentId, const ContainerWidget* frame,
                                                         const std::string& creationText)
{
    PluginManager* const plugins = PluginManager::Instance(true);
    const PluginManager::LinkKey link = frame ? frame->LinkKey() : 0;
    std::shared_ptr<ModuleBase> module =
        plugins->Hold(plugins->CreateLinkedModule(nComponentId, 0, link, std::string()));
    if (!module) {
        return nullptr;
    }
    ConfigStore* const settings = ConfigStore::Instance(true);
    module->SetProviders(panelry::bridge::QuoteProvider, panelry::bridge::TradeProvider);
    module->SetColorTable(ColorTable::Instance(true)->Table());
    module->SetConfigTables(settings->SystemTable(), settings->UserTable());
    module->Initialize(nComponentId, "", "", creationText.c_str());
    plugins->SendCurrentStock(0, link, module.get());
    return module;
}

// Beside the source, to the right if there is room for it, and never exactly on another window of the
// component.
void ContainerManager::PlaceClone(int nComponentId, ContainerWidget& frame, const ContainerWidget& source)
{
    const int width = source.width();
    const bool left = source.x() + 2 * (width + kCloneGap / 2) > WidthOfAllScreens();
    QPoint place(left ? source.x() - width - kCloneGap : source.x() + width + kCloneGap, source.y());
    const auto taken = [&place](const QPointer<QObject>& entry) {
        const auto* const window = qobject_cast<QWidget*>(entry.data());
        return window && window->pos() == place;
    };
    const Entries& entries = m_containers[nComponentId];
    while (std::any_of(entries.begin(), entries.end(), taken)) {
        place += QPoint(left ? -kCloneStep : kCloneStep, kCloneStep);
    }
    frame.move(place);
}

// What stands on the list for a module without a frame: its widget, or the module itself if it is a QObject.
QObject* ContainerManager::MarkModule(int nComponentId, ModuleBase& module,
                                      const panelry::CreationMessage& message)
{
    QWidget* const widget = module.GetWidget();
    if (widget) {
        widget->setProperty(panelry::kIgnoreLockHide, message.ignoreLockHide);
        widget->setProperty(panelry::kFirstWidget, m_containers[nComponentId].empty());
    }
    QObject* const marked = widget ? widget : dynamic_cast<QObject*>(&module);
    if (marked) {
        // As ModuleBase*, and read back as one: the address of the whole object may be another.
        marked->setProperty(panelry::kModulePointer, QVariant::fromValue(static_cast<void*>(&module)));
    }
    return marked;
}

void ContainerManager::AskForTitle(int nComponentId, const QPointer<ContainerWidget>& frame)
{
    StringMap names{{"component_id", std::to_string(nComponentId)}};
    panelry::CallHost(panelry::bridge::kComponentName, &names);
    const auto name = names.find("component_name");
    if (frame && name != names.end()) {
        frame->SetTitle(QString::fromStdString(name->second));
    }
}

void ContainerManager::RemoveContainer(QObject* object)
{
    auto* const frame = qobject_cast<ContainerWidget*>(object);
    for (auto& [id, entries] : m_containers) {
        const auto entry = std::find(entries.begin(), entries.end(), object);
        if (entry == entries.end()) {
            continue;
        }
        if (!frame && !qobject_cast<QWidget*>(object)) {
            continue;  // a module without a widget has nothing to close
        }
        ModuleBase* const module =
            frame ? frame->TakeModule()
                  : static_cast<ModuleBase*>(object->property(panelry::kModulePointer).value<void*>());
        const std::int32_t component = id;
        // Off the list first: the module's end may bring anything about.
        entries.erase(entry);
        RemoveModuleOf(frame, module);
        if (frame) {
            RefreshCloneButtons(component);
        }
        return;
    }
    if (frame) {  // closed while it was being made: not on the list yet
        RemoveModuleOf(frame, frame->TakeModule());
    }
}

void ContainerManager::RemoveModuleOf(const ContainerWidget* frame, ModuleBase* module)
{
    PluginManager* const plugins = PluginManager::Instance(true);
    if (!frame) {
        plugins->RemoveModule(0, 0, module);
        return;
    }
    const PluginManager::LinkKey link = frame->LinkKey();
    plugins->RemoveModule(0, link, module);
    plugins->ForgetLink(link);
}

void ContainerManager::RefreshCloneButtons(int nComponentId)
{
    const Entries entries = m_containers[nComponentId];
    for (const QPointer<QObject>& entry : entries) {
        if (auto* const frame = qobject_cast<ContainerWidget*>(entry.data())) {
            frame->SetCloneEnabled(entries.size() < kMostWindows);
        }
    }
}
