// The queue and who takes from it.
#include "storage/decoding_threads.h"

#include <csignal>
#include <span>
#include <stop_token>
#include <system_error>

namespace kelvo {
namespace {

// Threads begin with the signal mask of the one that starts them: signals are for the program's
// own thread, whose reads and waits they are to interrupt.
class SignalsBlocked {
 public:
  SignalsBlocked() {
    sigset_t all;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &before_);
  }
  SignalsBlocked(const SignalsBlocked&) = delete;
  SignalsBlocked& operator=(const SignalsBlocked&) = delete;
  ~SignalsBlocked() { pthread_sigmask(SIG_SETMASK, &before_, nullptr); }

 private:
  sigset_t before_{};
};

}  // namespace

DecodingThreads::DecodingThreads(const ChunkCoding& coding, std::size_t helpers)
    : own_decoder_(coding) {
  const SignalsBlocked blocked;
  for (std::size_t i = 0; i < helpers; ++i) decoders_.emplace_back(coding);
  for (ChunkDecoder& decoder : decoders_) {
    try {
      helpers_.emplace_back([this, &decoder](const std::stop_token& stop) { help(stop, decoder); });
    } catch (const std::system_error&) {
      return;  // those there are do it, or the caller's alone
    }
  }
}

void DecodingThreads::begin(CodedChunk* chunk) {
  {
    const std::lock_guard lock(mutex_);
    chunk->state = ChunkState::waiting;
    queue_.push_back(chunk);
  }
  work_.notify_one();
}

void DecodingThreads::finish(CodedChunk* chunk) {
  std::unique_lock lock(mutex_);
  while (chunk->state == ChunkState::waiting || chunk->state == ChunkState::running) {
    if (queue_.empty()) {
      done_.wait(lock);
    } else {
      decode_first(lock, own_decoder_);
    }
  }
}

void DecodingThreads::help(const std::stop_token& stop, ChunkDecoder& decoder) {
  std::unique_lock lock(mutex_);
  while (work_.wait(lock, stop, [this] { return !queue_.empty(); }) && !stop.stop_requested())
    decode_first(lock, decoder);
}

void DecodingThreads::decode_first(std::unique_lock<std::mutex>& lock, ChunkDecoder& decoder) {
  CodedChunk* chunk = queue_.front();
  queue_.pop_front();
  chunk->state = ChunkState::running;
  lock.unlock();
  const std::span<const std::byte> coded(chunk->coded.data(), chunk->coded_size);
  const bool is_sound = decoder.decode(coded, chunk->mask, chunk->chunk.data());
  lock.lock();
  chunk->state = is_sound ? ChunkState::decoded : ChunkState::failed;
  done_.notify_one();
}

}  // namespace kelvo
