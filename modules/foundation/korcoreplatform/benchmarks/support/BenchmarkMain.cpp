#include "korcoreplatform/benchmarks/support/PeerTable.h"
#include "korcoreplatform/benchmarks/support/Rounds.h"

int main(int argc, char** argv)
{
    return Rounds::HasScenarios() ? Rounds::Main(argc, argv) : PeerTable::Main(argc, argv);
}
