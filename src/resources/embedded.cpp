#include "resources/embedded.h"

#include <QDir>

// The macro declares a function, and that has to happen outside any namespace.
static void InitUnits()
{
    Q_INIT_RESOURCE(panelry);
    Q_INIT_RESOURCE(panelry_language);
}

namespace panelry
{

void InitResources()
{
    InitUnits();
}

}  // namespace panelry
