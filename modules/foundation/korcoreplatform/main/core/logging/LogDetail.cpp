#include "korcoreplatform/main/core/logging/LogDetail.h"

#include <iterator>
#include <vector>

namespace {

/// By value.
constexpr char16_t const* kNames[] = {
    u"Dictionary",
    u"Protocol",
    u"HTTPRequestor",
    u"Memory",
    u"Metadata",
    u"Cirrane",
    u"CirraneData",
    u"CirraneAllObjects",
    u"ListFilesTimings",
    u"WordleLayout",
    u"BIOSInfo",
    u"QueryXML",
    u"LogicalQueryText",
    u"LogicalQueryXML",
    u"LogicalQueryXMLWithNoTuples",
    u"LogicalQueryXMLVerbose",
    u"FederateQueryXML",
    u"LogicalRewriteList",
    u"LogicalRewriteXML",
    u"LogicalOptimizeXML",
    u"SetFunctionResolution",
    u"ODBCInsertTupleChunkSize",
    u"ODBCProtocolProgress",
    u"ODBCProtocolErrorDataDump",
    u"ExternalProtocolInsertData",
    u"QueryFormatting",
    u"QueryFunctionCompilation",
    u"QueryFunctionDataServerClient",
    u"AsyncTaskSvc",
    u"OciUserEnv",
    u"MapFetch",
    u"MapURLData",
    u"Network",
    u"ResourceManager",
    u"WebDataConnector",
    u"SecuritySensitive",
    u"Authentication",
    u"RelationTransforms",
    u"LiveQueryInSync",
    u"AutoComplete",
    u"HierarchySelectModel",
    u"ExpressionNodeXML",
    u"ARTResourceTracking",
    u"LogTransparentART",
    u"QueryActivity",
    u"DataDrivenResolver",
    u"SessionAttributesFilesTracking",
    u"Caching",
    u"InstanceCounter",
    u"AQLQueryHash",
    u"AQLQueryPrint",
    u"CurlDebugLogging",
    u"Count",
};
static_assert(std::size(kNames) == LogDetail::Count + 1);

/// Never destroyed: records are written until the very end of the process.
std::vector<TString> const& Names()
{
    static auto const& s_names = *new std::vector<TString>(std::begin(kNames), std::end(kNames));
    return s_names;
}

} // namespace

TString const& LogDetail::LogDetailToString(LogDetailEnums detail)
{
    auto const value = static_cast<std::size_t>(detail);
    return Names()[value < Names().size() ? value : std::size_t(Count)];
}

LogDetail::LogDetailEnums LogDetail::LogDetailFromString(TString const& name)
{
    for (std::size_t i = 0; i < Names().size(); ++i) {
        if (Names()[i].compare(name, TString::CaseInsensitive) == 0) {
            return static_cast<LogDetailEnums>(i);
        }
    }
    return Count;
}
