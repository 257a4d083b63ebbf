// The floors of the downloads: one SELECT, its rows as the documents that the agent would send.
//
// They write what the rows of the workloads hold, and what else those tables' texts could hold.
#pragma once

#include "bench/floor/database.h"
#include "bench/floor/record_stream.h"

namespace floors {

void SendContacts(const Database& store, RecordStream& stream);
void SendAppointments(const Database& store, RecordStream& stream);
void SendTasks(const Database& store, RecordStream& stream);
void SendMessages(const Database& store, RecordStream& stream);
void SendCalls(const Database& store, RecordStream& stream);

}  // namespace floors
