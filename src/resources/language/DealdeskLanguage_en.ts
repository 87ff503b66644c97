<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="en">
<context>
    <name>QObject</name>
    <message>
        <source>Algorithmdd_AccountType</source>
        <translation>Account type</translation>
    </message>
    <message>
        <source>Algorithmdd_Add</source>
        <translation>Add</translation>
    </message>
    <message>
        <source>Algorithmdd_AlgorithmCreation</source>
        <translation>New algorithm order</translation>
    </message>
    <message>
        <source>Algorithmdd_AllStates</source>
        <translation>All states</translation>
    </message>
    <message>
        <source>Algorithmdd_BatchAgrCreate</source>
        <translation>Create algorithm orders in bulk</translation>
    </message>
    <message>
        <source>Algorithmdd_BatchCreate</source>
        <translation>Create in bulk</translation>
    </message>
    <message>
        <source>Algorithmdd_CloseAfterCreation</source>
        <translation>Close window after creation</translation>
    </message>
    <message>
        <source>Algorithmdd_CompletionProgress</source>
        <translation>Progress</translation>
    </message>
    <message>
        <source>Algorithmdd_Controls</source>
        <translation>Controls</translation>
    </message>
    <message>
        <source>Algorithmdd_CreationTime</source>
        <translation>Created at</translation>
    </message>
    <message>
        <source>Algorithmdd_Date</source>
        <translation>Date</translation>
    </message>
    <message>
        <source>Algorithmdd_EndTime</source>
        <translation>End time</translation>
    </message>
    <message>
        <source>Algorithmdd_EndTimeText</source>
        <translation>When the algorithm order stops placing orders</translation>
    </message>
    <message>
        <source>Algorithmdd_Export</source>
        <translation>Export</translation>
    </message>
    <message>
        <source>Algorithmdd_Import</source>
        <translation>Import</translation>
    </message>
    <message>
        <source>Algorithmdd_ImportSuccessfully</source>
        <translation>Import successful</translation>
    </message>
    <message>
        <source>Algorithmdd_ImportText%1_%2_!</source>
        <translation>Import finished: %1 succeeded, %2 failed!</translation>
    </message>
    <message>
        <source>Algorithmdd_InputTip1</source>
        <translation>Enter a security code</translation>
    </message>
    <message>
        <source>Algorithmdd_InputTip10</source>
        <translation>Insufficient funds or sellable quantity</translation>
    </message>
    <message>
        <source>Algorithmdd_InputTip2</source>
        <translation>Select an algorithm type</translation>
    </message>
    <message>
        <source>Algorithmdd_InputTip3</source>
        <translation>Select buy or sell</translation>
    </message>
    <message>
        <source>Algorithmdd_InputTip4</source>
        <translation>Enter the target quantity</translation>
    </message>
    <message>
        <source>Algorithmdd_InputTip5</source>
        <translation>The target quantity must be a multiple of the lot size</translation>
    </message>
    <message>
        <source>Algorithmdd_InputTip6</source>
        <translation>The start time must not be in the past</translation>
    </message>
    <message>
        <source>Algorithmdd_InputTip7</source>
        <translation>The end time must be later than the start time</translation>
    </message>
    <message>
        <source>Algorithmdd_InputTip8</source>
        <translation>The order interval must be longer than 0 seconds</translation>
    </message>
    <message>
        <source>Algorithmdd_InputTip9</source>
        <translation>The order price is outside the daily price limits</translation>
    </message>
    <message>
        <source>Algorithmdd_InstanceId</source>
        <translation>Instance ID</translation>
    </message>
    <message>
        <source>Algorithmdd_InvestmentRemark</source>
        <translation>Investment remark</translation>
    </message>
    <message>
        <source>Algorithmdd_OrderInterval_Text</source>
        <translation>Time between two consecutive orders, in seconds</translation>
    </message>
    <message>
        <source>Algorithmdd_OrderInverval</source>
        <translation>Order interval</translation>
    </message>
    <message>
        <source>Algorithmdd_OrderPending</source>
        <translation>Order pending</translation>
    </message>
    <message>
        <source>Algorithmdd_ParameterSetting</source>
        <translation>Parameter settings</translation>
    </message>
    <message>
        <source>Algorithmdd_PromptMessage</source>
        <translation>Message</translation>
    </message>
    <message>
        <source>Algorithmdd_Run</source>
        <translation>Run</translation>
    </message>
    <message>
        <source>Algorithmdd_Seconds</source>
        <translation>seconds</translation>
    </message>
    <message>
        <source>Algorithmdd_StartTime</source>
        <translation>Start time</translation>
    </message>
    <message>
        <source>Algorithmdd_StartTimeText</source>
        <translation>When the algorithm order starts placing orders</translation>
    </message>
    <message>
        <source>Algorithmdd_State</source>
        <translation>State</translation>
    </message>
    <message>
        <source>Algorithmdd_TargetQuantity</source>
        <translation>Target quantity</translation>
    </message>
    <message>
        <source>Algorithmdd_Time</source>
        <translation>Time</translation>
    </message>
    <message>
        <source>Algorithmdd_TransactionLog</source>
        <translation>Transaction log</translation>
    </message>
    <message>
        <source>Algorithmdd_TransctionAmount</source>
        <translation>Transaction amount</translation>
    </message>
    <message>
        <source>Algorithmdd_Type</source>
        <translation>Type</translation>
    </message>
    <message>
        <source>Algorithmdd_WaitingTime</source>
        <translation>Waiting time</translation>
    </message>
    <message>
        <source>Algorithmdd_ZCSZZB</source>
        <translation>Market value to assets</translation>
    </message>
    <message>
        <source>ChartPlot_10Min</source>
        <translation>10 min</translation>
    </message>
    <message>
        <source>ChartPlot_15Min</source>
        <translation>15 min</translation>
    </message>
    <message>
        <source>ChartPlot_1Hour</source>
        <translation>1 hour</translation>
    </message>
    <message>
        <source>ChartPlot_1Min</source>
        <translation>1 min</translation>
    </message>
    <message>
        <source>ChartPlot_30Min</source>
        <translation>30 min</translation>
    </message>
    <message>
        <source>ChartPlot_3Min</source>
        <translation>3 min</translation>
    </message>
    <message>
        <source>ChartPlot_4Hour</source>
        <translation>4 hours</translation>
    </message>
    <message>
        <source>ChartPlot_5Min</source>
        <translation>5 min</translation>
    </message>
    <message>
        <source>ChartPlot_ChannelLine</source>
        <translation>Channel</translation>
    </message>
    <message>
        <source>ChartPlot_DailyChart</source>
        <translation>Daily</translation>
    </message>
    <message>
        <source>ChartPlot_DeleteDrawLine_Prompt</source>
        <translation>Delete the selected drawing?</translation>
    </message>
    <message>
        <source>ChartPlot_Ellipse</source>
        <translation>Ellipse</translation>
    </message>
    <message>
        <source>ChartPlot_HalfLine</source>
        <translation>Ray</translation>
    </message>
    <message>
        <source>ChartPlot_HorizonLine</source>
        <translation>Horizontal line</translation>
    </message>
    <message>
        <source>ChartPlot_Intraday</source>
        <translation>Intraday</translation>
    </message>
    <message>
        <source>ChartPlot_LineSegment</source>
        <translation>Line segment</translation>
    </message>
    <message>
        <source>ChartPlot_MonthlyChart</source>
        <translation>Monthly</translation>
    </message>
    <message>
        <source>ChartPlot_ParallelLine</source>
        <translation>Parallel lines</translation>
    </message>
    <message>
        <source>ChartPlot_PathLine</source>
        <translation>Polyline</translation>
    </message>
    <message>
        <source>ChartPlot_QuarterlyChart</source>
        <translation>Quarterly</translation>
    </message>
    <message>
        <source>ChartPlot_StraightLine</source>
        <translation>Straight line</translation>
    </message>
    <message>
        <source>ChartPlot_TrueCircle</source>
        <translation>Circle</translation>
    </message>
    <message>
        <source>ChartPlot_VerticalLine</source>
        <translation>Vertical line</translation>
    </message>
    <message>
        <source>ChartPlot_WeeklyChart</source>
        <translation>Weekly</translation>
    </message>
    <message>
        <source>ChartPlot_YearlyChart</source>
        <translation>Yearly</translation>
    </message>
    <message>
        <source>Common_AdvanceDecline</source>
        <translation>Advance/decline</translation>
    </message>
    <message>
        <source>Common_All</source>
        <translation>All</translation>
    </message>
    <message>
        <source>Common_Amount</source>
        <translation>Amount</translation>
    </message>
    <message>
        <source>Common_AskPrice1</source>
        <translation>Ask price 1</translation>
    </message>
    <message>
        <source>Common_AskPrice2</source>
        <translation>Ask price 2</translation>
    </message>
    <message>
        <source>Common_AskPrice3</source>
        <translation>Ask price 3</translation>
    </message>
    <message>
        <source>Common_AskPrice4</source>
        <translation>Ask price 4</translation>
    </message>
    <message>
        <source>Common_AskPrice5</source>
        <translation>Ask price 5</translation>
    </message>
    <message>
        <source>Common_Average</source>
        <translation>Average</translation>
    </message>
    <message>
        <source>Common_BidPirce1</source>
        <translation>Bid price 1</translation>
    </message>
    <message>
        <source>Common_BidPirce2</source>
        <translation>Bid price 2</translation>
    </message>
    <message>
        <source>Common_BidPirce3</source>
        <translation>Bid price 3</translation>
    </message>
    <message>
        <source>Common_BidPirce4</source>
        <translation>Bid price 4</translation>
    </message>
    <message>
        <source>Common_BidPirce5</source>
        <translation>Bid price 5</translation>
    </message>
    <message>
        <source>Common_Buy</source>
        <translation>Buy</translation>
    </message>
    <message>
        <source>Common_BuyIn</source>
        <translation>Buy</translation>
    </message>
    <message>
        <source>Common_Buyable</source>
        <translation>Buyable</translation>
    </message>
    <message>
        <source>Common_BuyingPrice</source>
        <translation>Buy price</translation>
    </message>
    <message>
        <source>Common_BuyingQuantity</source>
        <translation>Buy quantity</translation>
    </message>
    <message>
        <source>Common_Cancel</source>
        <translation>Cancel</translation>
    </message>
    <message>
        <source>Common_CancelAll</source>
        <translation>Cancel all</translation>
    </message>
    <message>
        <source>Common_CancelBuy</source>
        <translation>Cancel buys</translation>
    </message>
    <message>
        <source>Common_CancelSell</source>
        <translation>Cancel sells</translation>
    </message>
    <message>
        <source>Common_Comfirm</source>
        <translation>Confirm</translation>
    </message>
    <message>
        <source>Common_Complete</source>
        <translation>Complete</translation>
    </message>
    <message>
        <source>Common_ComponentName</source>
        <translation>Component name</translation>
    </message>
    <message>
        <source>Common_ComponentType</source>
        <translation>Component type</translation>
    </message>
    <message>
        <source>Common_Create</source>
        <translation>Create</translation>
    </message>
    <message>
        <source>Common_Custom</source>
        <translation>Custom</translation>
    </message>
    <message>
        <source>Common_Delete</source>
        <translation>Delete</translation>
    </message>
    <message>
        <source>Common_GgtSH</source>
        <translation>Southbound (Shanghai)</translation>
    </message>
    <message>
        <source>Common_GgtSZ</source>
        <translation>Southbound (Shenzhen)</translation>
    </message>
    <message>
        <source>Common_Hgt</source>
        <translation>Northbound (Shanghai)</translation>
    </message>
    <message>
        <source>Common_Latest</source>
        <translation>Latest</translation>
    </message>
    <message>
        <source>Common_LatestPrice</source>
        <translation>Latest price</translation>
    </message>
    <message>
        <source>Common_LimitDown</source>
        <translation>Limit down</translation>
    </message>
    <message>
        <source>Common_LimitUp</source>
        <translation>Limit up</translation>
    </message>
    <message>
        <source>Common_Market</source>
        <translation>Market</translation>
    </message>
    <message>
        <source>Common_MarketCapitalization</source>
        <translation>Market capitalization</translation>
    </message>
    <message>
        <source>Common_MarketValue</source>
        <translation>Market value</translation>
    </message>
    <message>
        <source>Common_MarketableQuantity</source>
        <translation>Sellable quantity</translation>
    </message>
    <message>
        <source>Common_NetAssets</source>
        <translation>Net assets</translation>
    </message>
    <message>
        <source>Common_OnlyShowKc</source>
        <translation>Cancelable only</translation>
    </message>
    <message>
        <source>Common_Order</source>
        <translation>Order</translation>
    </message>
    <message>
        <source>Common_OrderCanceled</source>
        <translation>Order canceled</translation>
    </message>
    <message>
        <source>Common_OrderPrice</source>
        <translation>Order price</translation>
    </message>
    <message>
        <source>Common_OrderQuantity</source>
        <translation>Order quantity</translation>
    </message>
    <message>
        <source>Common_Position</source>
        <translation>Position</translation>
    </message>
    <message>
        <source>Common_PositionMarketValue</source>
        <translation>Position market value</translation>
    </message>
    <message>
        <source>Common_PositionQuantity</source>
        <translation>Position quantity</translation>
    </message>
    <message>
        <source>Common_ProfirAndLoss</source>
        <translation>Profit and loss</translation>
    </message>
    <message>
        <source>Common_Quantity</source>
        <translation>Quantity</translation>
    </message>
    <message>
        <source>Common_QuantitySetting</source>
        <translation>Quantity settings</translation>
    </message>
    <message>
        <source>Common_Query</source>
        <translation>Query</translation>
    </message>
    <message>
        <source>Common_Refresh</source>
        <translation>Refresh</translation>
    </message>
    <message>
        <source>Common_Remark</source>
        <translation>Remark</translation>
    </message>
    <message>
        <source>Common_Save</source>
        <translation>Save</translation>
    </message>
    <message>
        <source>Common_SecurityCode</source>
        <translation>Security code</translation>
    </message>
    <message>
        <source>Common_SecurityName</source>
        <translation>Security name</translation>
    </message>
    <message>
        <source>Common_Sell</source>
        <translation>Sell</translation>
    </message>
    <message>
        <source>Common_SellOut</source>
        <translation>Sell</translation>
    </message>
    <message>
        <source>Common_SellingPrice</source>
        <translation>Sell price</translation>
    </message>
    <message>
        <source>Common_SellingQuantity</source>
        <translation>Sell quantity</translation>
    </message>
    <message>
        <source>Common_SetUp</source>
        <translation>Settings</translation>
    </message>
    <message>
        <source>Common_Sgt</source>
        <translation>Northbound (Shenzhen)</translation>
    </message>
    <message>
        <source>Common_Shares</source>
        <translation>shares</translation>
    </message>
    <message>
        <source>Common_Stop</source>
        <translation>Stop</translation>
    </message>
    <message>
        <source>Common_TheVeryDay</source>
        <translation>Today</translation>
    </message>
    <message>
        <source>Common_To</source>
        <translation>to</translation>
    </message>
    <message>
        <source>Common_Total</source>
        <translation>Total</translation>
    </message>
    <message>
        <source>Common_TotalAssets</source>
        <translation>Total assets</translation>
    </message>
    <message>
        <source>Common_TradingVolume</source>
        <translation>Volume</translation>
    </message>
    <message>
        <source>Common_Turnover</source>
        <translation>Turnover</translation>
    </message>
    <message>
        <source>Common_Usable</source>
        <translation>Available</translation>
    </message>
    <message>
        <source>Common_Vendibility</source>
        <translation>Sellable</translation>
    </message>
    <message>
        <source>Currency_List</source>
        <translation>Currency list</translation>
    </message>
    <message>
        <source>Currency_Unit</source>
        <translation>Currency unit</translation>
    </message>
    <message>
        <source>Dealdesk_DownwardReduction</source>
        <translation>Restore down</translation>
    </message>
    <message>
        <source>Dealdesk_Linked</source>
        <translation>Linked</translation>
    </message>
    <message>
        <source>FundsFlow_JRBX</source>
        <translation>Today's performance</translation>
    </message>
    <message>
        <source>FundsFlow_NetBuying</source>
        <translation>Net buying</translation>
    </message>
    <message>
        <source>FundsFlow_NetInflow</source>
        <translation>Net inflow</translation>
    </message>
    <message>
        <source>FundsFlow_SSECI</source>
        <translation>SSE Composite Index</translation>
    </message>
    <message>
        <source>FundsFlow_ShanghaiStockExchange</source>
        <translation>Shanghai Stock Exchange</translation>
    </message>
    <message>
        <source>FundsFlow_ShenzhenStockExchange</source>
        <translation>Shenzhen Stock Exchange</translation>
    </message>
    <message>
        <source>Generaldd_TradingDirection</source>
        <translation>Trading direction</translation>
    </message>
    <message>
        <source>IPO_EndTime</source>
        <translation>End time</translation>
    </message>
    <message>
        <source>IPO_PeiHaoQuery</source>
        <translation>Allotment number query</translation>
    </message>
    <message>
        <source>IPO_Select</source>
        <translation>Select</translation>
    </message>
    <message>
        <source>IPO_StartTime</source>
        <translation>Start time</translation>
    </message>
    <message>
        <source>IPO_XinGuInfo</source>
        <translation>IPO information</translation>
    </message>
    <message>
        <source>IPO_ZhongQianQuery</source>
        <translation>Lottery result query</translation>
    </message>
    <message>
        <source>KeySprite_NoMatch</source>
        <translation>No match</translation>
    </message>
    <message>
        <source>KeySprite_SearchAndViewStocks</source>
        <translation>Search and view stocks</translation>
    </message>
    <message>
        <source>Login_Add</source>
        <translation>Add</translation>
    </message>
    <message>
        <source>Login_CapitalAccount</source>
        <translation>Capital account</translation>
    </message>
    <message>
        <source>Login_CertificatePort</source>
        <translation>Certificate port</translation>
    </message>
    <message>
        <source>Login_CommunicationPassword</source>
        <translation>Communication password</translation>
    </message>
    <message>
        <source>Login_CustomerID</source>
        <translation>Customer ID</translation>
    </message>
    <message>
        <source>Login_Default</source>
        <translation>Default</translation>
    </message>
    <message>
        <source>Login_EnterCapital</source>
        <translation>Enter your capital account</translation>
    </message>
    <message>
        <source>Login_EnterCertificate</source>
        <translation>Enter the certificate password</translation>
    </message>
    <message>
        <source>Login_EnterCommunication</source>
        <translation>Enter the communication password</translation>
    </message>
    <message>
        <source>Login_EnterTradePassword</source>
        <translation>Enter the trading password</translation>
    </message>
    <message>
        <source>Login_EnterVerification</source>
        <translation>Enter the verification code</translation>
    </message>
    <message>
        <source>Login_HideAccount</source>
        <translation>Hide account</translation>
    </message>
    <message>
        <source>Login_IPAddress</source>
        <translation>IP address</translation>
    </message>
    <message>
        <source>Login_Login</source>
        <translation>Log in</translation>
    </message>
    <message>
        <source>Login_MarginAccount</source>
        <translation>Margin account</translation>
    </message>
    <message>
        <source>Login_NetworkSettings</source>
        <translation>Network settings</translation>
    </message>
    <message>
        <source>Login_NewTradingSystem</source>
        <translation>New trading system</translation>
    </message>
    <message>
        <source>Login_OrderServerList</source>
        <translation>Order servers</translation>
    </message>
    <message>
        <source>Login_Port</source>
        <translation>Port</translation>
    </message>
    <message>
        <source>Login_ProxyAddress</source>
        <translation>Proxy address</translation>
    </message>
    <message>
        <source>Login_ProxyTest</source>
        <translation>Test proxy</translation>
    </message>
    <message>
        <source>Login_QuoteServerList</source>
        <translation>Quote servers</translation>
    </message>
    <message>
        <source>Login_RegularAccount</source>
        <translation>Regular account</translation>
    </message>
    <message>
        <source>Login_RememberAccount</source>
        <translation>Remember account</translation>
    </message>
    <message>
        <source>Login_SSLEncryption</source>
        <translation>SSL encryption</translation>
    </message>
    <message>
        <source>Login_SSLPort</source>
        <translation>SSL port</translation>
    </message>
    <message>
        <source>Login_ServerName</source>
        <translation>Server name</translation>
    </message>
    <message>
        <source>Login_ServerSettings</source>
        <translation>Server settings</translation>
    </message>
    <message>
        <source>Login_SupportForIPv6Network</source>
        <translation>Support IPv6 networks</translation>
    </message>
    <message>
        <source>Login_TradingPassword</source>
        <translation>Trading password</translation>
    </message>
    <message>
        <source>Login_UseSOCKS5Proxy</source>
        <translation>Use SOCKS5 proxy</translation>
    </message>
    <message>
        <source>Login_UserName</source>
        <translation>User name</translation>
    </message>
    <message>
        <source>Login_UserPassword</source>
        <translation>User password</translation>
    </message>
    <message>
        <source>Login_VerificationCode</source>
        <translation>Verification code</translation>
    </message>
    <message>
        <source>MarketScape_Fall</source>
        <translation>Fall</translation>
    </message>
    <message>
        <source>MarketScape_LimitUpAtOpen</source>
        <translation>Limit up at open</translation>
    </message>
    <message>
        <source>MarketScape_NoLimitUpBoard</source>
        <translation>Limit up after open</translation>
    </message>
    <message>
        <source>MarketScape_Rise</source>
        <translation>Rise</translation>
    </message>
    <message>
        <source>Module_AlgorithmDD</source>
        <translation>Algorithmic trading</translation>
    </message>
    <message>
        <source>Module_ChartPlot</source>
        <translation>Chart drawing</translation>
    </message>
    <message>
        <source>Module_ChiNextIndex</source>
        <translation>ChiNext Index</translation>
    </message>
    <message>
        <source>Module_F10</source>
        <translation>F10 company profile</translation>
    </message>
    <message>
        <source>Module_GainAndLoss</source>
        <translation>Gain and loss</translation>
    </message>
    <message>
        <source>Module_GeneralDD</source>
        <translation>General trading</translation>
    </message>
    <message>
        <source>Module_KLine</source>
        <translation>Candlestick chart</translation>
    </message>
    <message>
        <source>Module_KeySprite</source>
        <translation>Keyboard wizard</translation>
    </message>
    <message>
        <source>Module_MarketCapitalization</source>
        <translation>Market capitalization</translation>
    </message>
    <message>
        <source>Module_ProfitabilityEffect</source>
        <translation>Profitability effect</translation>
    </message>
    <message>
        <source>Module_QuickDD</source>
        <translation>Quick trading</translation>
    </message>
    <message>
        <source>Module_RzrqDD</source>
        <translation>Margin trading</translation>
    </message>
    <message>
        <source>Module_ShanghaiStockIndex</source>
        <translation>SSE Composite Index</translation>
    </message>
    <message>
        <source>Module_ShenzhenStockIndex</source>
        <translation>SZSE Component Index</translation>
    </message>
    <message>
        <source>Module_SoutCapital</source>
        <translation>Southbound capital</translation>
    </message>
    <message>
        <source>Navpane_About</source>
        <translation>About</translation>
    </message>
    <message>
        <source>Navpane_Chance</source>
        <translation>Opportunities</translation>
    </message>
    <message>
        <source>Navpane_ContactUs</source>
        <translation>Contact us</translation>
    </message>
    <message>
        <source>Navpane_Feedback</source>
        <translation>Feedback</translation>
    </message>
    <message>
        <source>Navpane_Layout</source>
        <translation>Layout</translation>
    </message>
    <message>
        <source>Navpane_LockLayout</source>
        <translation>Lock layout</translation>
    </message>
    <message>
        <source>Navpane_Quote</source>
        <translation>Quotes</translation>
    </message>
    <message>
        <source>Navpane_RestoreDefault</source>
        <translation>Restore defaults</translation>
    </message>
    <message>
        <source>Navpane_SetUp</source>
        <translation>Settings</translation>
    </message>
    <message>
        <source>Navpane_SoftwareUpdate</source>
        <translation>Software update</translation>
    </message>
    <message>
        <source>Navpane_Stocks</source>
        <translation>Stocks</translation>
    </message>
    <message>
        <source>Navpane_Trade</source>
        <translation>Trade</translation>
    </message>
    <message>
        <source>Navpane_UnlockLayout</source>
        <translation>Unlock layout</translation>
    </message>
    <message>
        <source>Navpane_UsingHelp</source>
        <translation>Help</translation>
    </message>
    <message>
        <source>Navpane_Wathclists</source>
        <translation>Watchlists</translation>
    </message>
    <message>
        <source>Not_Login_Btn_Level2</source>
        <translation>Log in to Level-2 quotes</translation>
    </message>
    <message>
        <source>Not_Login_Btn_Rzrq</source>
        <translation>Log in to margin account</translation>
    </message>
    <message>
        <source>Not_Login_Btn_Trade</source>
        <translation>Log in to trading account</translation>
    </message>
    <message>
        <source>Not_Login_Tip</source>
        <translation>You are not logged in. Please log in first.</translation>
    </message>
    <message>
        <source>Quickdd_Amount</source>
        <translation>Amount</translation>
    </message>
    <message>
        <source>Quickdd_AvailableRatio</source>
        <translation>Available ratio</translation>
    </message>
    <message>
        <source>Quickdd_CDNeedConfirm</source>
        <translation>Confirm before canceling</translation>
    </message>
    <message>
        <source>Quickdd_Cancel</source>
        <translation>Cancel order</translation>
    </message>
    <message>
        <source>Quickdd_CancellationType</source>
        <translation>Cancellation type</translation>
    </message>
    <message>
        <source>Quickdd_Cgky</source>
        <translation>Exceeds available</translation>
    </message>
    <message>
        <source>Quickdd_Cgzdt</source>
        <translation>Exceeds price limits</translation>
    </message>
    <message>
        <source>Quickdd_ComponentScheme</source>
        <translation>Component scheme</translation>
    </message>
    <message>
        <source>Quickdd_CreatingCustomComponents</source>
        <translation>Create custom component</translation>
    </message>
    <message>
        <source>Quickdd_CurrentStock</source>
        <translation>Current stock</translation>
    </message>
    <message>
        <source>Quickdd_GeneralSetting</source>
        <translation>General settings</translation>
    </message>
    <message>
        <source>Quickdd_InputCode</source>
        <translation>Enter a code</translation>
    </message>
    <message>
        <source>Quickdd_PriceFloat</source>
        <translation>Price offset</translation>
    </message>
    <message>
        <source>Quickdd_Quantity</source>
        <translation>Quantity</translation>
    </message>
    <message>
        <source>Quickdd_QuantitySetting</source>
        <translation>Quantity settings</translation>
    </message>
    <message>
        <source>Quickdd_RestoreDefault</source>
        <translation>Restore defaults</translation>
    </message>
    <message>
        <source>Quickdd_ToBuy</source>
        <translation>Buy</translation>
    </message>
    <message>
        <source>Quickdd_ToSell</source>
        <translation>Sell</translation>
    </message>
    <message>
        <source>Quickdd_TradingComponentSettings</source>
        <translation>Trading component settings</translation>
    </message>
    <message>
        <source>Quickdd_Use</source>
        <translation>Use</translation>
    </message>
    <message>
        <source>Quickdd_WTNeedConfirm</source>
        <translation>Confirm before ordering</translation>
    </message>
    <message>
        <source>Quotationboard_AllBuyCount</source>
        <translation>Total bid volume</translation>
    </message>
    <message>
        <source>Quotationboard_AllSellCount</source>
        <translation>Total ask volume</translation>
    </message>
    <message>
        <source>Quotationboard_AvgBuyPrice</source>
        <translation>Average bid price</translation>
    </message>
    <message>
        <source>Quotationboard_AvgSellPrice</source>
        <translation>Average ask price</translation>
    </message>
    <message>
        <source>Quotationboard_Committee</source>
        <translation>Order imbalance ratio</translation>
    </message>
    <message>
        <source>Quotationboard_Deviation</source>
        <translation>Order imbalance</translation>
    </message>
    <message>
        <source>Rzrqdd_BuyAndReturn</source>
        <translation>Buy to return securities</translation>
    </message>
    <message>
        <source>Rzrqdd_Carsh</source>
        <translation>Cash</translation>
    </message>
    <message>
        <source>Rzrqdd_CollateralBuy</source>
        <translation>Collateral buy</translation>
    </message>
    <message>
        <source>Rzrqdd_CollateralSell</source>
        <translation>Collateral sell</translation>
    </message>
    <message>
        <source>Rzrqdd_FinancingPurchase</source>
        <translation>Margin purchase</translation>
    </message>
    <message>
        <source>Rzrqdd_Margin</source>
        <translation>Margin</translation>
    </message>
    <message>
        <source>Rzrqdd_OrderCode</source>
        <translation>Order code</translation>
    </message>
    <message>
        <source>Rzrqdd_OrderDirection</source>
        <translation>Order direction</translation>
    </message>
    <message>
        <source>Rzrqdd_OrderMode</source>
        <translation>Order mode</translation>
    </message>
    <message>
        <source>Rzrqdd_OrderName</source>
        <translation>Order name</translation>
    </message>
    <message>
        <source>Rzrqdd_Repay</source>
        <translation>Repay</translation>
    </message>
    <message>
        <source>Rzrqdd_SellAndReturn</source>
        <translation>Sell to repay</translation>
    </message>
    <message>
        <source>Rzrqdd_ShortSelling</source>
        <translation>Short sale</translation>
    </message>
    <message>
        <source>StockScape_ASK</source>
        <translation>Ask</translation>
    </message>
    <message>
        <source>StockScape_BID</source>
        <translation>Bid</translation>
    </message>
    <message>
        <source>StockScape_Change</source>
        <translation>Change</translation>
    </message>
    <message>
        <source>StockScape_CurrentPrice</source>
        <translation>Current price</translation>
    </message>
    <message>
        <source>StockScape_Highest</source>
        <translation>High</translation>
    </message>
    <message>
        <source>StockScape_Lowest</source>
        <translation>Low</translation>
    </message>
    <message>
        <source>StockScape_Number</source>
        <translation>Number</translation>
    </message>
    <message>
        <source>StockScape_OpeningPrice</source>
        <translation>Open</translation>
    </message>
    <message>
        <source>StockScape_PreviousClose</source>
        <translation>Previous close</translation>
    </message>
    <message>
        <source>T0Transtion_BtnMode</source>
        <translation>Button mode</translation>
    </message>
    <message>
        <source>T0Transtion_CCKY</source>
        <translation>Available position</translation>
    </message>
    <message>
        <source>T0Transtion_CDNoConfirm</source>
        <translation>Cancel without confirmation</translation>
    </message>
    <message>
        <source>T0Transtion_CanSet</source>
        <translation>Configurable</translation>
    </message>
    <message>
        <source>T0Transtion_Clicked</source>
        <translation>Click</translation>
    </message>
    <message>
        <source>T0Transtion_CommonAmount</source>
        <translation>Usual amounts</translation>
    </message>
    <message>
        <source>T0Transtion_CommonQuantity</source>
        <translation>Usual quantities</translation>
    </message>
    <message>
        <source>T0Transtion_DDType</source>
        <translation>Order entry mode</translation>
    </message>
    <message>
        <source>T0Transtion_DbClickNum</source>
        <translation>Double-click quantity</translation>
    </message>
    <message>
        <source>T0Transtion_DbClicked</source>
        <translation>Double-click</translation>
    </message>
    <message>
        <source>T0Transtion_DefaultOrder</source>
        <translation>Default order</translation>
    </message>
    <message>
        <source>T0Transtion_GDCD</source>
        <translation>Cancel pending orders</translation>
    </message>
    <message>
        <source>T0Transtion_LongShort</source>
        <translation>Long/short</translation>
    </message>
    <message>
        <source>T0Transtion_NoCancelable</source>
        <translation>No cancelable orders</translation>
    </message>
    <message>
        <source>T0Transtion_OrderAmount</source>
        <translation>Order amount</translation>
    </message>
    <message>
        <source>T0Transtion_OrderQuantity</source>
        <translation>Order quantity</translation>
    </message>
    <message>
        <source>T0Transtion_OrderSetting</source>
        <translation>Order settings</translation>
    </message>
    <message>
        <source>T0Transtion_OrderType</source>
        <translation>Order type</translation>
    </message>
    <message>
        <source>T0Transtion_SetAmountStep</source>
        <translation>Set amount step</translation>
    </message>
    <message>
        <source>T0Transtion_SetQuantityStep</source>
        <translation>Set quantity step</translation>
    </message>
    <message>
        <source>T0Transtion_TEXT</source>
        <translation>T+0 trading</translation>
    </message>
    <message>
        <source>T0Transtion_WTNoConfirm</source>
        <translation>Order without confirmation</translation>
    </message>
    <message>
        <source>T0Transtion_ZMYM</source>
        <translation>Left buys, right sells</translation>
    </message>
    <message>
        <source>TABLEFORM_Advisable</source>
        <translation>Withdrawable</translation>
    </message>
    <message>
        <source>TABLEFORM_CdNoConfirm</source>
        <translation>Cancel without confirmation</translation>
    </message>
    <message>
        <source>TABLEFORM_EnterCode</source>
        <translation>Enter a code</translation>
    </message>
    <message>
        <source>Transfer_Direction</source>
        <translation>Transfer direction</translation>
    </message>
    <message>
        <source>ZiJinManage_AccountFrozen</source>
        <translation>Account frozen</translation>
    </message>
    <message>
        <source>ZiJinManage_AvailableAmount</source>
        <translation>Available amount</translation>
    </message>
    <message>
        <source>ZiJinManage_DailyGainAndLoss</source>
        <translation>Daily gain and loss</translation>
    </message>
    <message>
        <source>ZiJinManage_DailyGainAndLossRatio</source>
        <translation>Daily gain and loss ratio</translation>
    </message>
    <message>
        <source>ZiJinManage_FundAccount</source>
        <translation>Fund account</translation>
    </message>
    <message>
        <source>ZiJinManage_FundBalance</source>
        <translation>Fund balance</translation>
    </message>
    <message>
        <source>ZiJinManage_PositionGainAndLoss</source>
        <translation>Position gain and loss</translation>
    </message>
    <message>
        <source>ZiJinManage_RedeemingAmount</source>
        <translation>Withdrawable amount</translation>
    </message>
</context>
</TS>
