// The lists that placements are returned in, and the one that each thread keeps in reserve.

#include "PlacementReserve.h"

#include <pthread.h>

#include <algorithm>
#include <climits>
#include <memory>
#include <mutex>
#include <new>
#include <utility>
#include <vector>

namespace orx {

namespace {

PlacementList* AllocateList() { return new (std::nothrow) PlacementList(0, INT_MAX); }

// A thread has its reserve from its first call; the one that loads the module, from the start.
pthread_key_t reserveKey;
bool reservesAreKept = false;

// Owns the reserves of all threads while the module is loaded. A thread's reserve is freed when the
// thread ends, or with the module if that is unloaded first.
class Reserves {
  public:
    Reserves();
    ~Reserves();

    // Makes a list the reserve of this thread, unless memory runs out.
    void Make() {
        std::unique_ptr<PlacementList> list(AllocateList());
        if (list == nullptr) return;
        const std::lock_guard lock(mutex_);
        try {
            lists_.push_back(std::move(list));
        } catch (const std::bad_alloc&) {
            return;
        }
        if (pthread_setspecific(reserveKey, lists_.back().get()) != 0) lists_.pop_back();
    }

    // The caller owns the list from now on.
    PlacementList* Take(PlacementList* list) {
        const std::lock_guard lock(mutex_);
        const auto place = std::find_if(lists_.begin(), lists_.end(),
                                        [list](const auto& one) { return one.get() == list; });
        if (place == lists_.end()) return nullptr;
        PlacementList* taken = place->release();
        lists_.erase(place);
        return taken;
    }

  private:
    std::mutex mutex_;
    std::vector<std::unique_ptr<PlacementList>> lists_;
} reserves;

Reserves::Reserves() {
    const auto release = [](void* list) {
        delete reserves.Take(static_cast<PlacementList*>(list));
    };
    reservesAreKept = pthread_key_create(&reserveKey, release) == 0;
    if (reservesAreKept) Make();
}

Reserves::~Reserves() {
    if (!reservesAreKept) return;
    pthread_key_delete(reserveKey);
    reservesAreKept = false;
}

}  // namespace

PlacementList* NewPlacementList() {
    if (!reservesAreKept) return AllocateList();
    if (pthread_getspecific(reserveKey) == nullptr) reserves.Make();
    PlacementList* list = AllocateList();
    if (list == nullptr) {
        list = reserves.Take(static_cast<PlacementList*>(pthread_getspecific(reserveKey)));
        pthread_setspecific(reserveKey, nullptr);
    }
    return list;
}

}  // namespace orx
