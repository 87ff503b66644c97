#include "ticket/data_deal_base.h"

#include <utility>

DataDealBase::DataDealBase() = default;
DataDealBase::~DataDealBase() = default;

void DataDealBase::SetObservers(std::weak_ptr<QuoteObserver> quoteSide,
                                std::weak_ptr<TradeObserver> tradeSide)
{
    m_quoteSide = std::move(quoteSide);
    m_tradeSide = std::move(tradeSide);
}

void DataDealBase::ReservedHook(std::uintptr_t /*a*/) {}
void DataDealBase::ReservedHookA(std::uintptr_t /*a*/, std::uintptr_t /*b*/) {}
void DataDealBase::ReservedHookB(std::uintptr_t /*a*/) {}
void DataDealBase::ReservedHookC(std::uintptr_t /*a*/) {}
void DataDealBase::ReservedHookD(std::uintptr_t /*a*/) {}
void DataDealBase::ReservedHookE(std::uintptr_t /*a*/) {}
void DataDealBase::ReservedHookF(std::uintptr_t /*a*/) {}
void DataDealBase::ReservedHookG(std::uintptr_t /*a*/) {}
void DataDealBase::ReservedHookH(std::shared_ptr<StockInfoAnswer> /*answer*/, std::uintptr_t /*a*/) {}
void DataDealBase::ReservedHookI(std::shared_ptr<StockInfoAnswer> /*answer*/, std::uintptr_t /*a*/) {}
void DataDealBase::ReservedHookJ(std::shared_ptr<StockInfoAnswer> /*answer*/) {}
void DataDealBase::ReservedHookK(std::shared_ptr<StockInfoAnswer> /*answer*/, std::uintptr_t /*a*/) {}
void DataDealBase::ReservedHookL(std::uintptr_t /*a*/, std::uintptr_t /*b*/) {}
void DataDealBase::ReservedHookM(std::uintptr_t /*a*/, std::uintptr_t /*b*/) {}

void DataDealBase::FillCancelRequest(std::shared_ptr<ddsdk::TradeRequestParam> /*request*/,
                                     StringMap& /*row*/)
{
}
void DataDealBase::FillTableRefreshRequest(std::shared_ptr<ddsdk::TradeRequestParam> /*request*/,
                                           StringMap& /*description*/)
{
}
void DataDealBase::QueryFunds(StringMap& /*parameters*/) {}
void DataDealBase::QueryPositions(StringMap& /*parameters*/) {}
void DataDealBase::QueryDeals(StringMap& /*parameters*/) {}
void DataDealBase::QueryOrders(StringMap& /*parameters*/) {}
void DataDealBase::QueryCancelableOrders(StringMap& /*parameters*/) {}
void DataDealBase::OnFundsAnswer(std::shared_ptr<StockInfoAnswer> /*answer*/, StringMap& /*scratch*/) {}
void DataDealBase::OnPositionsTable(std::shared_ptr<HostTable> /*table*/) {}
void DataDealBase::OnFundsFields(std::shared_ptr<StringMap> /*fields*/) {}
