// Units and their targets, as their files describe them.
#pragma once

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "base/content_hash.h"
#include "types/context/context.h"
#include "types/context/context_template.h"
#include "types/model/dependency.h"

namespace Vesk {

class Target {
  public:
    virtual ~Target() = default;

    std::string name;
    std::vector<std::string> parameters;
    std::vector<DependencyRecord> dependencies;
    ContextTemplate body;                               ///< as it is written
    std::shared_ptr<const Context> context;             ///< the body, merged; see `setBody`
    std::shared_ptr<const std::filesystem::path> file;  ///< where it is written
    std::uint32_t line = 0;

    /// Covers the text, the file and the place in it. Empty for a target that stands in no file.
    std::optional<ContentHash> hash;

    /// Takes the body and merges it. Throws what merging throws, with notes.
    void setBody(ContextTemplate written);

    /// "vesk.txt:12", for notes in messages.
    std::string place() const;
};

/// The targets of one or more unit files. Target names keep their case.
class Unit {
  public:
    std::string name;           ///< empty until the file, or whoever loads it, gives one
    bool nameDeclared = false;  ///< the file has a `unit` line
    std::vector<std::filesystem::path> files;
    std::vector<std::shared_ptr<const Target>> targets;  ///< in the order of the files

    /// Throws VeskException for a second target of the same name; the message gives both places.
    void addTarget(std::shared_ptr<const Target> target);

    /// Null if there is no such target.
    std::shared_ptr<const Target> findTarget(std::string_view targetName) const;
    std::vector<std::string> targetNames() const;

  private:
    std::unordered_map<std::string, std::size_t> index_;
};

/// The context of one visit of a target.
class TargetContext : public Context {
  public:
    TargetContext(std::shared_ptr<const Target> target, std::string displayName)
        : target_(std::move(target)), displayName_(std::move(displayName)) {}

    const Target& target() const noexcept { return *target_; }
    const std::string& displayName() const noexcept { return displayName_; }  ///< unit::target

    /// The dump with each variable's modifier in front of it.
    void print(int level) const override;

  private:
    std::shared_ptr<const Target> target_;
    std::string displayName_;
};

}  // namespace Vesk
