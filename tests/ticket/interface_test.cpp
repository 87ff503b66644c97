#include <clocale>
#include <cstring>

#include "support/test.h"
#include "ticket/data_deal_base.h"

namespace
{

// The places of virtual operations in the class's table, by the layout of the platform's member pointers: one
// more than the distance in bytes. The destructor has the first two places.
template <class... Operations>
QList<std::ptrdiff_t> PlacesOf(Operations... operations)
{
    const auto place = [](auto operation) {
        std::ptrdiff_t words[2];
        static_assert(sizeof operation == sizeof words);
        std::memcpy(words, &operation, sizeof words);
        return (words[0] - 1) / static_cast<std::ptrdiff_t>(sizeof(void*));
    };
    return {place(operations)...};
}

}  // namespace

class TicketInterfaceTest : public panelry::test::Test
{
    Q_OBJECT

private Q_SLOTS:
    void OperationsKeepTheirPlaces()
    {
        using D = DataDealBase;
        const QList<std::ptrdiff_t> places = PlacesOf(
            &D::ReservedHookA, &D::OnQuotePush, &D::RequestStockInfo, &D::RequestUsableAmount,
            &D::ReservedHookB, &D::ReservedHookC, &D::FillCancelRequest, &D::ReservedHook,
            &D::FillTableRefreshRequest, &D::QueryFunds, &D::QueryPositions, &D::QueryDeals, &D::QueryOrders,
            &D::QueryCancelableOrders, &D::ReservedHookD, &D::NotifyConfigChange, &D::ReservedHookE,
            &D::ReservedHookF, &D::ReservedHookG, &D::OnStockInfo, &D::ReservedHookH, &D::ReservedHookI,
            &D::ReservedHookJ, &D::OnFundsAnswer, &D::OnPositionsTable, &D::OnFundsFields, &D::ReservedHookK,
            &D::CheckOrder, &D::ReservedHookL, &D::ReservedHookM, &D::HasAuthority, &D::MatchCodeMask,
            &D::IsTzmCode, &D::ResolveAccountFields, &D::SelectWeituoKind, &D::FindAccountForCode,
            &D::FindAccountByMarket, &D::ResolveAmountUnit, &D::ResolveHandSize,
            &D::UpdateProtectedLimitFields, &D::IsProtectedLimitSupported, &D::IsContinuousPhase,
            &D::ComputeProtectedRange, &D::FillMaxAmount, &D::QueryMarketOrderTypes, &D::IsBhjgMarket,
            &D::ListCodeCandidates, &D::ResolveDuplicateCodes);
        QCOMPARE(places.size(), 48);
        for (int operation = 0; operation < places.size(); ++operation) {
            QCOMPARE(places[operation], std::ptrdiff_t{operation} + 2);
        }
    }

    // The whole program also runs under a locale of its own; see CMakeLists.txt.
    void TheLocaleIsTheOneThatIsMeant()
    {
        const QByteArray point = qgetenv("PANELRY_DECIMAL_POINT");
        QCOMPARE(QByteArray(std::localeconv()->decimal_point), point.isEmpty() ? QByteArray(".") : point);
    }
};

PANELRY_TEST(TicketInterfaceTest)
#include "interface_test.moc"
