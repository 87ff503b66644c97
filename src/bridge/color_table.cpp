#include "bridge/color_table.h"

#include "bridge/config_json.h"

ColorTable::ColorTable() : m_table(panelry::ReadConfigFile("sysconfig/color.json").table) {}
