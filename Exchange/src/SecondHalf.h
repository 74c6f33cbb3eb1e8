// The second half of an exchange file, read by a thread of its own while the first half is read.
//
// It begins at a guess: after a ";" that is followed by "#". Whether that is a statement of a data
// section, rather than part of a string or comment, is known when the reader of the first half
// arrives there. If so, the second half is kept, up to the end of its section or to the first
// statement that depends on the text before it: one with an error, or a scope.

#ifndef EXCHANGE_SECONDHALF_H
#define EXCHANGE_SECONDHALF_H

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>
#include <thread>

#include "Exchange.h"
#include "ExchangeLexer.h"
#include "Input.h"
#include "InstanceReader.h"
#include "Problems.h"

namespace exchange {

class SecondHalf {
  public:
    // Begins to read at what seems to be the first statement at or after an offset. Returns null if
    // there is none, or no second thread. `first` is the reader of the first half.
    static std::unique_ptr<SecondHalf> Begin(const Source& source, std::uint64_t from,
                                             const std::string& file, const ReadOptions& options,
                                             SchemaPtr schema, const InstanceReader& first);
    SecondHalf(const SecondHalf&) = delete;
    SecondHalf& operator=(const SecondHalf&) = delete;
    // Stops reading.
    ~SecondHalf();

    // The offset of the first statement.
    std::uint64_t Start() const { return start_; }
    // The bytes read so far.
    std::uint64_t Progress() const { return progress_.load(std::memory_order_relaxed); }

    // Waits until it has been read. Returns null if memory ran out.
    kor::Model* Wait();
    // After Wait: where it ends, given where it starts; and its warnings.
    Input::Position End(const Input::Position& start) const;
    void TellWarnings(const Input::Position& start, Messages& messages) const;

  private:
    SecondHalf(std::unique_ptr<Source> source, const std::string& file, const ReadOptions& options,
               const InstanceReader& first);

    bool FindStart(std::uint64_t from);
    void Read() noexcept;

    const std::unique_ptr<Source> source_;
    Messages messages_;
    Problems problems_;
    ExchangeLexer lexer_;
    std::unique_ptr<kor::Model> model_;
    InstanceReader instances_;
    Input::Position end_;             // its lines are counted from the start
    std::uint64_t warningCount_ = 0;  // up to there
    // What both threads read, apart from what one of them writes for each instance: a cache line
    // that goes back and forth takes longer than reading the instance.
    alignas(64) std::uint64_t start_ = 0;
    std::atomic<std::uint64_t> progress_{0};
    std::atomic<bool> stopped_{false};
    std::thread thread_;
};

}  // namespace exchange

#endif
