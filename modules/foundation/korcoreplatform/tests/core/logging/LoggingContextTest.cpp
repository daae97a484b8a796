#include "korcoreplatform/main/core/logging/LoggingContext.h"

#include "korcoreplatform/main/core/runtime/AutoSynchronize.h"
#include "korcoreplatform/main/core/runtime/TUUID.h"
#include "korcoreplatform/tests/support/KorTest.h"
#include "korsys/tests/support/Threads.h"

namespace {

// Readers find each id with its text while another thread changes them; under the lowest lock of
// all, the lock of the id violates no order.
TEST(LoggingContextTest, QuarantineIdIsReadWhileItIsSet)
{
    TString const texts[] = {u"00000000-0000-0000-0000-000000000000",
                             u"01234567-89AB-CDEF-0123-456789ABCDEF"};
    AutoSynchronize::SetEnforceLockLeveling(true);
    std::atomic<bool> isDone{false};
    OnThreads(2, [&](unsigned thread) {
        for (int i = 0; thread == 0 && i < 2'000; ++i) {
            TLog::SetLogQuarantineUuid(TUUID(texts[i % 2]));
        }
        isDone = isDone || thread == 0;
        do {
            TRecursiveMutex mutex;
            AutoSynchronize const outer(mutex, INT_MIN + 1, "", "", 0);
            TString const text = TLog::GetLogQuarantineUuidString();
            EXPECT_TRUE(text == texts[0] || text == texts[1]) << text.toStdString();
        } while (!isDone);
    });
    AutoSynchronize::SetEnforceLockLeveling(false);

    EXPECT_EQ(TLog::GetLogQuarantineUuid(), TUUID(texts[1]));
    EXPECT_TRUE(TLog::IsQuarantineLoggingEnabled());
    TLog::SetLogQuarantineUuid(TUUID());
    EXPECT_FALSE(TLog::IsQuarantineLoggingEnabled());
}

} // namespace
