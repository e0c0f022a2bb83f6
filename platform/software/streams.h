// When operations run: the streams of the software device.
#pragma once

#include "platform/software/pool.h"
#include "platform/table.h"

namespace software {

// Hands an operation to a stream (null: the default stream). In production it runs in the order of
// issue, beside whatever the calling thread does until it waits. On the earliest schedule it has
// run when this returns; on the latest it waits until something needs it. An operation tells its
// own failure by failAsynchronously().
void submit(platform::Stream stream, Operation operation);
// A production-only short cut: whether the caller may simply run an operation of so much work here
// and now.
bool runsAtOnce(std::size_t work);

// Runs what the stream's end waits for: its own operations, and the default stream's before
// them, which themselves wait for everything issued earlier.
void drain(platform::Stream stream);
void drainAll();

platform::Stream createStream();
bool isStream(platform::Stream stream);
// What is still pending on the stream runs later, as on a GPU.
bool destroyStream(platform::Stream stream);
// Streams and events created and not destroyed.
int liveStreams();

// An event stands for what a stream has been given up to the event's last record; until there is
// one, for nothing. A wait keeps what the stream is given after it behind that.
platform::Event createEvent();
bool isEvent(platform::Event event);
bool destroyEvent(platform::Event event);
void recordEvent(platform::Event event, platform::Stream stream);
void waitForEvent(platform::Stream stream, platform::Event event);

// Drops all streams, events and pending operations without running them.
void resetStreams();

// A failure of something that ran; the next synchronisation reports it.
void failAsynchronously(int error);
int takeAsynchronousError();

}  // namespace software
