/// Every error of the product: category, kind, number, message.
///
/// The factories of `KorErrorsError`, the checks beside them and the error catalogue are made from
/// this list. Whoever wants the rows defines `KOR_ERROR_ID(category, kind, number, message)` and
/// includes it, as often as needed; the macro is undefined at the end.
///
/// The id string of a row is category, "_", kind, "_" and the number as it is spelled here. A
/// number is drawn at random, never used twice and never changed: handlers and logs know it. The
/// message is the text of the exception with its parameters as %1, %2 and so on, or for a logic
/// assert the asserted text; one in parentheses only describes a text that is made elsewhere.

// No include guard on purpose.

#ifndef KOR_ERROR_ID
#define KOR_ERROR_ID(category, kind, number, message)
#endif

// The core text type
KOR_ERROR_ID(StringException, AutoGen, 0x9798B690,
             "TStringCore: index %1 is outside a text of %2 units.")
KOR_ERROR_ID(StringException, AutoGen, 0xDBED6C12, "TStringCore: length %1 is not valid.")
KOR_ERROR_ID(StringException, AutoGen, 0xC83B3D89, "TStringCore: a text of %1 units is too long.")
KOR_ERROR_ID(StringException, AutoGen, 0xB1923A1A, "TStringCore: null text with length %1.")
KOR_ERROR_ID(StringException, AutoGen, 0x30E31408, "TStringCore: %1 is not a number base.")
KOR_ERROR_ID(StringException, AutoGen, 0x4A0E3015,
             "TStringCore: code point iterator moved outside its text.")

// Format strings
KOR_ERROR_ID(TFormatStringException, AutoGen, 0x24F8A094,
             "Insufficient parameters to format string (have %1, need %2: format string = \"%3\").")
KOR_ERROR_ID(TFormatStringException, AutoGen, 0xE643480C,
             "Leading zero in marker number in format string.")
KOR_ERROR_ID(TFormatStringException, AutoGen, 0x4CBC0F36,
             "Invalid numberless marker in format string.")
KOR_ERROR_ID(TFormatStringException, AutoGen, 0x06BAA2A5,
             "Invalid marker number > 99 in format string.")
KOR_ERROR_ID(TFormatStringException, AutoGen, 0x0C641F97,
             "Invalid marker number <= 0 in format string.")
KOR_ERROR_ID(TFormatStringException, AutoGen, 0x703C877B,
             "Format string ends with an incomplete marker.")
KOR_ERROR_ID(TFormatStringException, AutoGen, 0xD6462A0F,
             "Format string ends with an invalid marker number <= 0.")

// Scan strings, under the category of format strings
KOR_ERROR_ID(TFormatStringException, AutoGen, 0x00985BE7,
             "TScanString::end(): Expected null character.")
KOR_ERROR_ID(TFormatStringException, AutoGen, 0x0E56132D,
             "TScanString::lengthBool: Boolean value not found.")
KOR_ERROR_ID(TFormatStringException, AutoGen, 0x5D4E46DF,
             "TScanString::lengthInt: Integer value not found.")
KOR_ERROR_ID(TFormatStringException, AutoGen, 0x7C7E3D50,
             "TScanString::readInt: Integer value not found.")
KOR_ERROR_ID(TFormatStringException, AutoGen, 0x47A09D13,
             "TScanString::lengthFloat: Float value not found.")
KOR_ERROR_ID(TFormatStringException, AutoGen, 0x2241B337,
             "TScanString::lengthNewLine: No new line found.")
KOR_ERROR_ID(TFormatStringException, AutoGen, 0xDB5CF171,
             "TScanString::readDouble: Float value not found.")
KOR_ERROR_ID(TFormatStringException, AutoGen, 0x3FBB5E47,
             "TScanString::readFloat: Float value not found.")
KOR_ERROR_ID(TFormatStringException, AutoGen, 0x4CA5552B, "TScanString::skip: String mismatch.")
KOR_ERROR_ID(LogicException, LogicAssert, 0x858A74C8, "text")

// Log files, the log configuration, exception logging
KOR_ERROR_ID(KorvelException, AutoGen, 0x96B9ECEF, "logfile %1 is already locked")
KOR_ERROR_ID(KorvelException, AutoGen, 0x98E57943, "Creating logfile %1 failed with error %2")
KOR_ERROR_ID(KorvelException, AutoGen, 0xAD83A89C, "Expected a value of type string.")
KOR_ERROR_ID(KorvelException, AutoGen, 0x1A36D05F, "(the messages of the caught exception)")
KOR_ERROR_ID(LogicException, LogicAssert, 0x8C06D7DE, "eptr")

// Paths
KOR_ERROR_ID(TPathException, AutoGen, 0xE27C2B2D, "Element position out of range.")
KOR_ERROR_ID(TPathException, AutoGen, 0xDE3B1FC7, "Separator position out of range.")
KOR_ERROR_ID(TPathException, AutoGen, 0x6C57764F, "Invalid index in TPath::iterator::get.")
KOR_ERROR_ID(TPathException, AutoGen, 0x2AFC3482, "TPath::iterator trying to increment beyond end.")
KOR_ERROR_ID(TPathException, AutoGen, 0x5CD09D9F, "TPath::iterator out of sync in next.")
KOR_ERROR_ID(TPathException, AutoGen, 0x97C2DA67, "TPath::iterator found a zero-length element.")
KOR_ERROR_ID(TPathException, AutoGen, 0xA7D4C6D2,
             "TPath::iterator trying to decrement beyond beginning.")
KOR_ERROR_ID(TPathException, AutoGen, 0xD1461535, "TPath::iterator out of sync in prev.")

// Path and file functions
KOR_ERROR_ID(TPathException, AutoGen, 0x7C7DFAB4, "Destination exists. Not copying file")
KOR_ERROR_ID(TPathException, AutoGen, 0x0C5F149A, "Unable to copy file to existing non-file")
KOR_ERROR_ID(TPathException, AutoGen, 0xF7FF15E2, "Error copying file")
KOR_ERROR_ID(TPathException, AutoGen, 0x7F4B3D5C,
             "Unable to determine size of file '%1' (file does not exist)")
KOR_ERROR_ID(TPathException, AutoGen, 0x4C0573C8,
             "IsDirectory: Cannot get status of non-existent path '%1'")
KOR_ERROR_ID(TPathException, AutoGen, 0xD1E89D61,
             "IsRegularFile: Cannot get status of non-existent path '%1'")
KOR_ERROR_ID(TPathException, AutoGen, 0xC4B62E99,
             "IsSymlink: Cannot get status of non-existent path '%1'")
KOR_ERROR_ID(TPathException, AutoGen, 0xBF27D89B,
             "LocalLastWriteTime: Cannot get modification time of non-existent path '%1'")
KOR_ERROR_ID(KorvelException, AutoGen, 0x8CA372D6, "Unable to write to \"%1\".")

// Byte streams and files
KOR_ERROR_ID(TIOException, AutoGen, 0x3DE8E9E4, "Unable to open file '%1': %2")
KOR_ERROR_ID(TIOException, AutoGen, 0x3470DA84, "(the device's error text)")
KOR_ERROR_ID(TIOException, TFile, 0x47B61D6A,
             "IO error, attempting to read %1 bytes from file. (error=%2)")
KOR_ERROR_ID(TIOException, AutoGen, 0x91F378B3, "IO error, couldn't write to file: '%1'.")
KOR_ERROR_ID(TIOException, AutoGen, 0x16CDB0C3, "GetQIODevice() returned nullptr.")
KOR_ERROR_ID(TIOException, AutoGen, 0x15B14D91, "(the device's error text)")
KOR_ERROR_ID(TIOException, AutoGen, 0x7A55F773, "(the device's error text)")
KOR_ERROR_ID(KorvelException, AutoGen, 0xB5B83DCB,
             "Unable to flush \"%1\" afer exhausting all retries.  Giving up.")
KOR_ERROR_ID(LogicException, LogicAssert, 0xC629F74E, "false && \"Unknown encoding\"")
KOR_ERROR_ID(LogicException, LogicAssert, 0x19E29F4A, "false && \"Unknown encoding\"")

// Directories
KOR_ERROR_ID(TDirectoryException, AutoGen, 0xF0366EE6, "Directory does not exist: %1")
KOR_ERROR_ID(TDirectoryException, AutoGen, 0x798E13C2, "Unable to open directory: %1")
KOR_ERROR_ID(TDirectoryException, AutoGen, 0x027437A0,
             "Attempt to increment directory iterator past end")
KOR_ERROR_ID(TDirectoryException, AutoGen, 0x7DF53CA6,
             "Attempt to deference directory iterator at end")

// Processes and the system
KOR_ERROR_ID(TIOException, AutoGen, 0xC3D29B3D, "(the process's error text)")
KOR_ERROR_ID(LogicException, LogicAssert, 0x7993B488,
             "Setting environment variable '%1' not allowed in this code path. For product code, "
             "initialize at startup and for tests add to exceptions.")
KOR_ERROR_ID(LogicException, LogicAssert, 0xCC3C06F5,
             "Cannot set environment variable '%1' to '%2' because the value is too long.  Pick a "
             "shorter value or increase the placeholder length.")
KOR_ERROR_ID(LogicException, LogicAssert, 0xFF647F10,
             "*GetEnvironmentVariableInitializationAllowedFlag()")

// Session context and session objects
KOR_ERROR_ID(LogicException, LogicAssert, 0xD612CFB0,
             "CoreThreadContext::SetGenericUnsynchronizedObject requires ThreadContext to be "
             "initialized")
KOR_ERROR_ID(LogicException, LogicAssert, 0x7615C447,
             "CoreThreadContext::SetGenericSynchronizedObject requires ThreadContext to be "
             "initialized")
KOR_ERROR_ID(LogicException, LogicAssert, 0x9B334DB6, "fnPtr")
KOR_ERROR_ID(LogicException, LogicAssert, 0x8EC5143D, "insertedNewId")
KOR_ERROR_ID(LogicException, LogicAssert, 0x0AAE8A7B, "found")
KOR_ERROR_ID(LogicException, LogicAssert, 0x4C43FF6F, "sit->second == nullptr")
KOR_ERROR_ID(LogicException, LogicAssert, 0xA1EE3CF3, "sessionObjectsInterface != nullptr")
KOR_ERROR_ID(LogicException, LogicAssert, 0x7B7322CC, "sessionObjectsInterface != nullptr")
KOR_ERROR_ID(LogicException, LogicAssert, 0x0F1C04B5, "sessionObjectsInterface != nullptr")
KOR_ERROR_ID(LogicException, LogicAssert, 0xF735FBEE, "sessionObjectsInterface != nullptr")

// UUIDs and the crash hook
KOR_ERROR_ID(KorvelException, AutoGen, 0x318CE3BA, "TUUID::FromBase36: String too short.")
KOR_ERROR_ID(KorvelException, AutoGen, 0x9B4122E9, "TUUID::FromBase36: String cannot be parsed.")
KOR_ERROR_ID(KorvelException, AutoGen, 0xEEAA139E,
             "Internal error in file \"modules/foundation/korcoreplatform/main/core/ICrashNow\" at "
             "line 12.")

#undef KOR_ERROR_ID
