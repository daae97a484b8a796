/// The categories of diagnostic records, each of which may have its own severity threshold.

#pragma once

#include "korcoreplatform/main/KorCorePlatformExport.h"
#include "korcoreplatform/main/string/TString.h"

#include <cstddef>
#include <cstdint>

namespace LogDetail {

/// The numbers are fixed: configurations and callers rely on them.
enum LogDetailEnums : std::int32_t
{
    Dictionary = 0,
    Protocol = 1,
    HTTPRequestor = 2,
    Memory = 3,
    Metadata = 4,
    Cirrane = 5,
    CirraneData = 6,
    CirraneAllObjects = 7,
    ListFilesTimings = 8,
    WordleLayout = 9,
    BIOSInfo = 10,
    QueryXML = 11,
    LogicalQueryText = 12,
    LogicalQueryXML = 13,
    LogicalQueryXMLWithNoTuples = 14,
    LogicalQueryXMLVerbose = 15,
    FederateQueryXML = 16,
    LogicalRewriteList = 17,
    LogicalRewriteXML = 18,
    LogicalOptimizeXML = 19,
    SetFunctionResolution = 20,
    ODBCInsertTupleChunkSize = 21,
    ODBCProtocolProgress = 22,
    ODBCProtocolErrorDataDump = 23,
    ExternalProtocolInsertData = 24,
    QueryFormatting = 25,
    QueryFunctionCompilation = 26,
    QueryFunctionDataServerClient = 27,
    AsyncTaskSvc = 28,
    OciUserEnv = 29,
    MapFetch = 30,
    MapURLData = 31,
    Network = 32,
    ResourceManager = 33,
    WebDataConnector = 34,
    SecuritySensitive = 35,
    Authentication = 36,
    RelationTransforms = 37,
    LiveQueryInSync = 38,
    AutoComplete = 39,
    HierarchySelectModel = 40,
    ExpressionNodeXML = 41,
    ARTResourceTracking = 42,
    LogTransparentART = 43,
    QueryActivity = 44,
    DataDrivenResolver = 45,
    SessionAttributesFilesTracking = 46,
    Caching = 47,
    InstanceCounter = 48,
    AQLQueryHash = 49,
    AQLQueryPrint = 50,
    CurlDebugLogging = 51,
    Count = 52 ///< The number of categories, and as a value: no category.
};

/// Hashes a category to its number.
struct LogDetailHash
{
    std::size_t operator()(LogDetailEnums detail) const noexcept
    {
        return static_cast<std::size_t>(detail);
    }
};

/// The enumerator's name, "Count" included; "Count" also for a value that is no category. The text
/// lives as long as the process.
/// Thread safety: may be called from any thread, as may `LogDetailFromString`.
KORCOREPLATFORM_EXPORT TString const& LogDetailToString(LogDetailEnums detail);

/// Reads such a name in any letter case; any other text is `Count`.
KORCOREPLATFORM_EXPORT LogDetailEnums LogDetailFromString(TString const& name);

} // namespace LogDetail
