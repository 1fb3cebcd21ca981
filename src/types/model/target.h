// Units and their targets, as their files describe them.
#pragma once

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "base/content_hash.h"
#include "types/context/context.h"
#include "types/context/context_template.h"
#include "types/model/dependency.h"

namespace Vesk {

class Target;

/// What is written behind a target's name.
struct TargetText {
    /// Merges the body. Throws what merging throws, with notes.
    TargetText(std::vector<DependencyRecord> needed, std::shared_ptr<const ContextTemplate> written)
        : dependencies(std::move(needed)), body(std::move(written)), context(body->instantiate()) {}

    std::vector<DependencyRecord> dependencies;
    std::shared_ptr<const ContextTemplate> body;  ///< as it is written
    std::shared_ptr<const Context> context;       ///< the body, merged
};

/// Reads texts of targets when they are asked for.
class TargetTextSource {
  public:
    virtual ~TargetTextSource() = default;

    /// Of the target with this number in the source.
    virtual std::shared_ptr<const TargetText> read(const Target& target, std::size_t number) = 0;

    /// The same text as it is written.
    virtual std::string_view written(std::size_t number) const = 0;
};

/// What is known of a target by its name may be all that is needed of it. So its text may be read
/// only when it is first asked for: whoever asks gets all of it, and need not know. To be used on
/// one thread.
class Target {
  public:
    virtual ~Target() = default;

    std::string name;
    std::vector<std::string> parameters;
    std::shared_ptr<const std::filesystem::path> file;  ///< where it is written
    std::uint32_t line = 0;

    /// Covers the text, the file and the place in it. Empty for a target that stands in no file.
    std::optional<ContentHash> hash;

    /// What follows throws what reading throws.
    const std::shared_ptr<const TargetText>& text() const;
    const std::vector<DependencyRecord>& dependencies() const { return text()->dependencies; }
    const ContextTemplate& body() const { return *text()->body; }
    const std::shared_ptr<const Context>& context() const { return text()->context; }

    /// False when the text cannot name a variable, whatever it says; nothing is read to find out.
    bool mayName(std::string_view variable) const;

    void setText(std::shared_ptr<const TargetText> text);

    /// The same for a body without dependencies. Throws what merging throws, with notes.
    void setBody(ContextTemplate written);

    /// The text is to be read from there.
    void setSource(std::shared_ptr<TargetTextSource> source, std::size_t number);

    /// "vesk.txt:12", for notes in messages.
    std::string place() const;

  private:
    mutable std::shared_ptr<const TargetText> text_;  ///< null: not read yet
    std::shared_ptr<TargetTextSource> source_;
    std::size_t number_ = 0;
};

/// The targets of one or more unit files. Target names keep their case.
class Unit {
  public:
    std::string name;           ///< empty until the file, or whoever loads it, gives one
    bool nameDeclared = false;  ///< the file has a `unit` line
    std::vector<std::filesystem::path> files;
    std::vector<std::shared_ptr<const Target>> targets;  ///< in the order of the files

    /// Makes room for this many targets.
    void reserve(std::size_t count);

    /// Throws VeskException for a second target of the same name; the message gives both places.
    void addTarget(std::shared_ptr<const Target> target);

    /// Null if there is no such target.
    std::shared_ptr<const Target> findTarget(std::string_view targetName) const;
    std::vector<std::string> targetNames() const;

  private:
    std::unordered_map<std::string_view, std::size_t> index_;  ///< names live in the targets
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
