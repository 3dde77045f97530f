#include <ToviFoundationKit/Foundation/PredicateNode.h>

#include <unordered_map>

#include <ToviFoundationKit/Foundation/NSCoder.h>
#include <ToviFoundationKit/Foundation/NSExpression.h>
#include <ToviFoundationKit/Foundation/NSMutableArray.h>
#include <ToviFoundationKit/Foundation/NSMutableDictionary.h>
#include <ToviFoundationKit/Foundation/PredicateEvaluator_p.h>
#include <ToviFoundationKit/Foundation/PredicateNode_p.h>
#include <ToviFoundationKit/Runtime/NSException.h>
#include <ToviFoundationKit/Runtime/StringBuilder.h>

namespace tovi::detail {

PredicateNode::~PredicateNode() { delete idle_.load(std::memory_order_acquire); }

bool PredicateNode::isEqual(const NSObject* other) const {
    const auto* const node = dynamic_cast<const PredicateNode*>(other);
    if (!node)
        return false;
    std::vector<std::pair<const PredicateNode*, const PredicateNode*>> pairs{{this, node}};
    while (!pairs.empty()) {
        const PredicateNode &a = pairs.back().first->essence(), &b = pairs.back().second->essence();
        pairs.pop_back();
        if (&a == &b)
            continue;
        if (&a.isa() != &b.isa() || a.parts_.size() != b.parts_.size() || !a.isSameAlone(b))
            return false;
        for (std::size_t i = 0; i < a.parts_.size(); ++i)
            pairs.emplace_back(a.parts_[i].get(), b.parts_[i].get());
    }
    return true;
}

NSUInteger PredicateNode::hash() const {
    NSUInteger hash = 0;
    walk(*this, [&hash](const PredicateNode& node, std::size_t index) {
        hash = (hash ^ (index ? index : node.hashAlone())) * 0x9E3779B97F4A7C15U;
        hash ^= hash >> 29;
    });
    return hash;
}

Ref<NSString> PredicateNode::description() const {
    StringBuilder out;
    walk(*this, [&out](const PredicateNode& node, std::size_t index) {
        const auto parenthesizes = [&node](std::size_t part) {
            return part < node.parts_.size() && node.parenthesizes(part, node.parts_[part]->essence().binding());
        };
        if (index && parenthesizes(index - 1))
            out.append(u')');
        node.write(out, index);
        if (parenthesizes(index))
            out.append(u'(');
    });
    return out.string();
}

Ref<NSObject> PredicateNode::copy() const { return share(*this); }

PredicateNode::Parts PredicateNode::partsFrom(const NSArray& list) {
    Parts parts;
    parts.reserve(list.count());
    for (NSObject& each : list) {
        auto* const node = dynamic_cast<PredicateNode*>(&each);
        if (!node)
            NSException::raise(NSInvalidArgumentException, u"%@ is neither a predicate nor an expression", each);
        parts.emplace_back(*node);
    }
    return parts;
}

Ref<NSArray> PredicateNode::listOfParts(std::size_t from) const {
    return NSArray::from(std::span(parts_).subspan(from));
}

// What has been made of the parts waits in a row; a node takes its own from the end.
Ref<PredicateNode> PredicateNode::withVariables(const NSDictionary& variables) const {
    Parts made;
    std::unordered_map<std::u16string_view, std::size_t> bound;
    walk(*this, [&](const PredicateNode& node, std::size_t index) {
        const NSString* const name = node.boundName();
        if (name && index + 1 == node.parts_.size())
            ++bound[*name];
        if (index < node.parts_.size())
            return;
        if (name)
            --bound[*name];
        const NSString* const variable = node.variableName();
        NSObject* const value = variable && !bound[*variable] ? variables.find(*variable) : nullptr;
        const auto first = made.end() - static_cast<std::ptrdiff_t>(node.parts_.size());
        if (auto* const expression = as<NSExpression>(value)) {
            made.emplace_back(*expression);
        } else if (value) {
            made.emplace_back(NSExpression::expressionForConstantValue(value));
        } else if (std::equal(first, made.end(), node.parts_.begin(),
                              [](const auto& a, const auto& b) { return a.get() == b.get(); })) {
            made.erase(first, made.end());
            made.emplace_back(share(node));
        } else {
            Parts parts(first, made.end());
            made.erase(first, made.end());
            made.push_back(node.withParts(std::move(parts)));
        }
    });
    return made.front();
}

// --- In archives -----------------------------------------------------------------------------------------------------

void PredicateNode::encodeWithCoder(NSCoder& coder) const {
    const Ref<NSArray> fields = archivedFields(), parts = listOfParts();
    if (coder.allowsKeyedCoding()) {
        coder.encodeObject_forKey(fields.get(), u"fields"_ns);
        coder.encodeObject_forKey(parts.get(), u"parts"_ns);
    } else {
        coder.encodeObject(fields.get());
        coder.encodeObject(parts.get());
    }
}

// A part that is not complete yet leads back to its whole.
void PredicateNode::initWithCoder(NSCoder& coder) {
    const bool keyed = coder.allowsKeyedCoding();
    const auto fields = keyed ? coder.decodeForKey<NSArray>(u"fields"_ns) : coder.decode<NSArray>();
    const auto parts = keyed ? coder.decodeForKey<NSArray>(u"parts"_ns) : coder.decode<NSArray>();
    bool isSound = fields && parts && !isComplete_;
    for (NSUInteger i = 0; isSound && i < parts->count(); ++i) {
        auto* const node = dynamic_cast<PredicateNode*>(&(*parts)[i]);
        isSound = node && node->isComplete_;
        if (isSound)
            parts_.emplace_back(*node);
    }
    if (!isSound || !setArchivedFields(*fields)) {
        parts_.clear();
        NSException::raise(NSInvalidUnarchiveOperationException, u"a %@ of parts that do not make one", isa());
    }
    isComplete_ = true;
}

}  // namespace tovi::detail
