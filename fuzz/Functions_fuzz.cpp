// Random calls of every function on small random models, traced and untraced.

#include "Input.h"
#include "KORPSNTrace.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    FuzzedDataProvider input(data, size);
    FuzzedChoices choices(input);
    KORPSNTrace::Configure(choices.Below(2) == 0 ? 0 : 12, "/dev/null");
    RandomWorld world(choices, 2 + choices.Below(24));
    while (input.remaining_bytes() != 0) {
        CallAndCheck(TheModule(), world.AnyCall(), world.Session());
    }
    TheModule().Call(*orx::FindExport("RemoveValueVersion"), {});
    world.Content();
    return 0;
}
