// The compilation database that every build of a project keeps current.
#pragma once

#include <string>

#include "app/session.h"
#include "driver/visit_memory.h"
#include "keep/visit_store.h"
#include "platform/question_list.h"

namespace Vesk {

/// The file that COMPILE_COMMANDS names in a project's profile, from the project's root. Empty when
/// there is none.
std::string compilationDatabaseOf(const ProjectCatalog& catalog, const Project& project);

/// Writes the database of the session's project, unless nothing has changed that it depends on
/// since it was written: then no target is visited. `keeper` remembers what that is; null: it is
/// not known. Throws VeskException when the file cannot be written, and where visits are checked
/// and it would have been left as it is by mistake.
void keepDatabaseCurrent(const std::string& path, const Session& session,
                         const BuildSetting& setting, VisitKeeper* keeper);

/// Adds what the next run would ask before it leaves the database as it is, in a run that has kept
/// it current. False if that one may have to make it again.
bool expectDatabase(const std::string& path, const Session& session, VisitStore& store,
                    platform::QuestionList& questions);

}  // namespace Vesk
