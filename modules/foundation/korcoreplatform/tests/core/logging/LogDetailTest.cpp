#include "korcoreplatform/main/core/logging/LogDetail.h"

#include "korcoreplatform/main/core/logging/Severity.h"
#include "korcoreplatform/tests/support/KorTest.h"

namespace {

using namespace LogDetail;
using TLog::Severity;

#define KOR_CATEGORIES                                                                             \
    Dictionary, Protocol, HTTPRequestor, Memory, Metadata, Cirrane, CirraneData,                   \
        CirraneAllObjects, ListFilesTimings, WordleLayout, BIOSInfo, QueryXML, LogicalQueryText,   \
        LogicalQueryXML, LogicalQueryXMLWithNoTuples, LogicalQueryXMLVerbose, FederateQueryXML,    \
        LogicalRewriteList, LogicalRewriteXML, LogicalOptimizeXML, SetFunctionResolution,          \
        ODBCInsertTupleChunkSize, ODBCProtocolProgress, ODBCProtocolErrorDataDump,                 \
        ExternalProtocolInsertData, QueryFormatting, QueryFunctionCompilation,                     \
        QueryFunctionDataServerClient, AsyncTaskSvc, OciUserEnv, MapFetch, MapURLData, Network,    \
        ResourceManager, WebDataConnector, SecuritySensitive, Authentication, RelationTransforms,  \
        LiveQueryInSync, AutoComplete, HierarchySelectModel, DataDrivenResolver,                   \
        ExpressionNodeXML, ARTResourceTracking, LogTransparentART, QueryActivity,                  \
        SessionAttributesFilesTracking, Caching, InstanceCounter, AQLQueryHash, AQLQueryPrint,     \
        CurlDebugLogging, Count
#define KOR_TEXT(...) #__VA_ARGS__
#define KOR_TEXT_OF(...) KOR_TEXT(__VA_ARGS__)

TEST(LogDetailTest, EveryCategoryHasItsEnumeratorsName)
{
    LogDetailEnums const categories[] = {KOR_CATEGORIES};
    std::vector<TString> const names = TString(KOR_TEXT_OF(KOR_CATEGORIES)).split(u", ");
    ASSERT_EQ(names.size(), 53u);
    for (std::size_t i = 0; i < names.size(); ++i) {
        EXPECT_EQ(LogDetailToString(categories[i]), names[i]);
        EXPECT_EQ(LogDetailFromString(names[i].toLower()), categories[i]);
    }
    EXPECT_EQ(LogDetailFromString(u"datadrivenresolver"), 45); // its number, not its place above
    EXPECT_EQ(LogDetailToString(static_cast<LogDetailEnums>(53)), u"Count");
    EXPECT_EQ(LogDetailToString(static_cast<LogDetailEnums>(-1)), u"Count");
}

TEST(LogDetailTest, OtherTextsAreNoCategoryAndNoSeverity)
{
    for (char16_t const* text : {u"", u"Networ", u"Networks", u" Network", u"Warning", u"3"}) {
        EXPECT_EQ(LogDetailFromString(text), Count) << TString(text).toStdString();
        EXPECT_EQ(TLog::SeverityFromString(text), Severity::Off) << TString(text).toStdString();
    }
    EXPECT_EQ(LogDetailFromString(u"networ\u212A"), Network); // the Kelvin sign folds to k
    int value = 0;
    for (TString const name :
         {u"Trace", u"Debug", u"Info", u"Warn", u"Error", u"Fatal", u"Off", u"LogDetail"}) {
        auto const severity = static_cast<Severity>(value++);
        EXPECT_EQ(TLog::SeverityToString(severity), name);
        EXPECT_EQ(TLog::SeverityFromString(name.toUpper()), severity);
    }
    EXPECT_EQ(TLog::SeverityToString(static_cast<Severity>(8)), u"Off");
}

} // namespace
