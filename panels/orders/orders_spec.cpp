#include "orders/orders_spec.h"

namespace panelry
{

namespace
{

std::vector<ColumnSpec> OrderColumns()
{
    return {{"2140"},
            {"2102", ColumnKind::Text, 7},
            {"2103", ColumnKind::Text, 10},
            {"2109"},
            {"2127", ColumnKind::Number},
            {"2126", ColumnKind::Number},
            {"2128", ColumnKind::Number},
            {"2946"},
            {"2135"}};
}

std::vector<ColumnSpec> DealColumns()
{
    return {{"2142"},
            {"2102", ColumnKind::Text, 7},
            {"2103", ColumnKind::Text, 10},
            {"2109"},
            {"2129", ColumnKind::Number},
            {"2128", ColumnKind::Number},
            {"2131", ColumnKind::Number, 11},
            {"2135"},
            {"2130"}};
}

}  // namespace

TablesSpec OrdersSpec()
{
    return {"orders",
            {{"可撤", "chedan_table", &DataDealBase::QueryCancelableOrders, "2135", true, OrderColumns()},
             {"当日委托", "weituo_table", &DataDealBase::QueryOrders, "2135", false, OrderColumns()},
             {"当日成交", "chengjiao_table", &DataDealBase::QueryDeals, "2130", false, DealColumns()}}};
}

}  // namespace panelry
