// How one assignment merges into another of the same name.
#pragma once

#include "types/context/assignment.h"

namespace Vesk {

/// Whether a sum remembers the assignments that it is made of, if their result depends on what they
/// are merged onto.
enum class Parts { keep, forget };

/// Throws AssignmentException for a forbidden merge, and whatever appending throws.
void mergeInto(Assignment& stored, const Assignment& assignment, ModifierMode mode, Parts parts);

/// The mode for one of the assignments that make up a sum.
ModifierMode partMode(const Assignment& part, ModifierMode mode);

/// After `^name += value` has made the variable, records in it what dependants are to append.
void exportAppend(Assignment& stored, const Assignment& assignment);

/// Whether an append has to wait until references are resolved: it meets a reference, in the value
/// or in what is stored, or would turn one into text.
bool needsResolving(const Assignment& stored, const Assignment& appended);

}  // namespace Vesk
