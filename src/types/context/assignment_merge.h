// How one assignment merges into another of the same name.
#pragma once

#include "types/context/assignment.h"

namespace Vesk {

/// Whether a sum remembers the assignments that it is made of, where what they give depends on what
/// they are merged onto.
enum class Parts { keep, forget };

/// Throws AssignmentException for a forbidden merge, and what appending throws.
void mergeInto(Assignment& stored, const Assignment& assignment, ModifierMode mode, Parts parts);

/// The mode for one of the assignments that another is the sum of.
ModifierMode partMode(const Assignment& part, ModifierMode mode);

/// Notes in a variable that `^name += value` has just made what dependants are to append.
void exportAppend(Assignment& stored, const Assignment& assignment);

/// Whether an append can only be made when references are resolved: one that meets a reference, in
/// the value or in what is stored, or that would turn one into text.
bool needsResolving(const Assignment& stored, const Assignment& appended);

}  // namespace Vesk
