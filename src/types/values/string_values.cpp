#include "types/values/string_values.h"

#include <cctype>

#include "platform/files.h"
#include "types/values/errors.h"
#include "types/values/expansion.h"
#include "types/values/identifier_path.h"
#include "types/values/list_value.h"
#include "types/values/simple_values.h"
#include "types/values/value_size.h"

namespace Vesk {
namespace {

bool isSpace(char c) noexcept {
    return std::isspace(static_cast<unsigned char>(c)) != 0;
}

/// Walks over the words of a text: runs of bytes between white space.
class WordIterator : public IVeskValueIterator {
  public:
    WordIterator(std::shared_ptr<const VeskBaseString> owner, std::size_t from)
        : owner_(std::move(owner)), text_(owner_->text), start_(from), end_(from) {}

    IVeskValueIterator& next() override {
        start_ = end_;
        while (start_ < text_.size() && isSpace(text_[start_])) {
            ++start_;
        }
        end_ = start_;
        while (end_ < text_.size() && !isSpace(text_[end_])) {
            ++end_;
        }
        return *this;
    }

    ValuePtr get() const override {
        return owner_->makeString(text_.substr(start_, end_ - start_));
    }

    bool equals(const IVeskValueIterator& other) const override {
        const auto* word = dynamic_cast<const WordIterator*>(&other);
        return word != nullptr && start_ == word->start_ && text_ == word->text_;
    }

  private:
    std::shared_ptr<const VeskBaseString> owner_;
    std::string text_;
    std::size_t start_;
    std::size_t end_;
};

/// The text that a string takes from an operand of `add` or `append`.
struct Operand {
    std::string text;
    bool isString = false;
    bool isList = false;
};

Operand operandOf(const VeskValue& other, const VeskBaseString& self) {
    if (const auto* string = valueAs<VeskBaseString>(&other)) {
        return {string->text, true, false};
    }
    if (valueAs<VeskInt>(&other) != nullptr) {
        return {other.toString(), false, false};
    }
    if (valueAs<VeskList>(&other) != nullptr) {
        return {other.toString(), false, true};
    }
    throw BadConversion(other.typeName(), other.toDisplayString(), self.typeName());
}

}  // namespace

void VeskBaseString::addTo(ValueSize& size) const {
    size.addBytes(text.size());
}

ValuePtr VeskBaseString::add(const VeskValue& other) const {
    const Operand operand = operandOf(other, *this);
    checkTextSize(text.size() + 1 + operand.text.size());
    return makeString(text + (operand.isList ? " " : "") + operand.text);
}

void VeskBaseString::append(const VeskValue& other) {
    const Operand operand = operandOf(other, *this);
    checkTextSize(text.size() + 1 + operand.text.size());
    text += (operand.isString || operand.isList ? " " : "") + operand.text;
}

ValuePtr VeskBaseString::at(const Key& key) const {
    const auto length = static_cast<std::int64_t>(text.size());
    if (const auto* index = std::get_if<IndexKey>(&key)) {
        if (index->index >= 0 && index->index < length) {
            return makeString(text.substr(static_cast<std::size_t>(index->index), 1));
        }
    } else if (const auto* range = std::get_if<RangeKey>(&key)) {
        if (range->start >= 0 && range->start <= range->end && range->end <= length) {
            return makeString(text.substr(static_cast<std::size_t>(range->start),
                                          static_cast<std::size_t>(range->end - range->start)));
        }
    }
    throw IndexException(toDisplayString(), key);
}

std::string VeskBaseString::toDisplayString() const {
    return "\"" + text + "\"";
}

std::shared_ptr<const VeskBaseString> VeskBaseString::sharedSelf() const {
    auto self = weak_from_this().lock();
    return self ? self : makeString(text);
}

ValueIteratorPtr VeskBaseString::begin() const {
    auto iterator = std::make_unique<WordIterator>(sharedSelf(), 0);
    iterator->next();
    return iterator;
}

ValueIteratorPtr VeskBaseString::end() const {
    return std::make_unique<WordIterator>(sharedSelf(), text.size());
}

bool VeskBaseString::equals(const VeskValue& other) const {
    const auto* string = valueAs<VeskBaseString>(&other);
    return string != nullptr && unquoted() == string->unquoted();
}

bool VeskBaseString::greaterThan(const VeskValue& other) const {
    const auto* string = valueAs<VeskBaseString>(&other);
    return string != nullptr && text.size() > string->text.size();
}

bool VeskBaseString::lessThan(const VeskValue& other) const {
    const auto* string = valueAs<VeskBaseString>(&other);
    return string != nullptr && text.size() < string->text.size();
}

std::string VeskString::unquoted() const {
    const bool quoted = text.size() >= 2 && text.front() == '"' && text.back() == '"';
    return quoted ? text.substr(1, text.size() - 2) : text;
}

std::shared_ptr<VeskBaseString> VeskString::makeString(std::string newText) const {
    return std::make_shared<VeskString>(std::move(newText));
}

ValuePtr VeskString::resolve() {
    if (resolver_ == nullptr) {
        return makeString(text);
    }
    Expanded expanded = expandText(text, *resolver_);
    ValuePtr value;
    if (expanded.isList) {
        auto list = std::make_shared<VeskList>();
        for (std::string& each : expanded.texts) {
            list->items.push_back(std::make_shared<VeskString>(std::move(each)));
        }
        value = std::move(list);
    } else {
        value = std::make_shared<VeskString>(std::move(expanded.texts.front()));
    }
    text = value->toString();
    return value;
}

bool VeskString::isSettled() const {
    return text.find('$') == std::string::npos && text.find('#') == std::string::npos;
}

bool VeskPathString::isWhole() const {
    return baseDirectory.empty() || platform::isAbsolutePath(text);
}

bool VeskPathString::isSettled() const {
    return isWhole() && VeskString::isSettled();
}

std::string VeskPathString::toDisplayString() const {
    const std::string shown =
        isWhole() ? text : platform::pathToUtf8(baseDirectory / platform::pathFromUtf8(text));
    return "P\"" + shown + "\"";
}

bool VeskPathString::equals(const VeskValue& other) const {
    const auto* path = valueAs<VeskPathString>(&other);
    if (path == nullptr) {
        return VeskBaseString::equals(other);
    }
    return platform::isSameFile(
        std::filesystem::absolute(baseDirectory / platform::pathFromUtf8(text)),
        std::filesystem::absolute(path->baseDirectory / platform::pathFromUtf8(path->text)));
}

std::shared_ptr<VeskBaseString> VeskPathString::makeString(std::string newText) const {
    return std::make_shared<VeskPathString>(std::move(newText), baseDirectory);
}

ValuePtr VeskPathString::joinedToBase(const std::string& path) const {
    if (platform::isAbsolutePath(path) || baseDirectory.empty()) {
        return makeString(path);
    }
    const std::filesystem::path whole = baseDirectory / platform::pathFromUtf8(path);
    return makeString(platform::pathToUtf8(whole.lexically_normal()));
}

namespace {

/// The paths that a literal stands for, as texts.
std::vector<std::string> pathTexts(const std::string& text, Resolver& resolver) {
    std::vector<std::string> texts;
    if (isSingleReference(text)) {
        const std::string name = text.substr(2, text.size() - 3);
        const ValuePtr value = valueOrReport(identifierPathFrom(name), resolver);
        if (!value) {
            return texts;
        }
        const bool isPath = valueAs<VeskPathString>(value.get()) != nullptr;
        const bool hasElements = valueAs<VeskList>(value.get()) != nullptr ||
                                 valueAs<VeskString>(value.get()) != nullptr;
        if (hasElements && !isPath) {
            for (const ValuePtr& element : elementsOf(*value)) {
                texts.push_back(element->toString());
            }
            return texts;
        }
    }
    return expandText(text, resolver).texts;
}

}  // namespace

ValuePtr VeskPathString::resolve() {
    if (resolver_ == nullptr) {
        return joinedToBase(text);
    }
    const std::vector<std::string> texts = pathTexts(text, *resolver_);
    if (texts.size() == 1) {
        ValuePtr path = joinedToBase(texts.front());
        text = path->toString();
        return path;
    }
    auto list = std::make_shared<VeskList>();
    for (const std::string& path : texts) {
        list->items.push_back(joinedToBase(path));
    }
    text = list->toString();
    return list;
}

std::shared_ptr<VeskBaseString> VeskRawString::makeString(std::string newText) const {
    return std::make_shared<VeskRawString>(std::move(newText));
}

}  // namespace Vesk
