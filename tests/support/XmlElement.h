// Elements of an XML text, read by a parser that accepts only well-formed XML.

#ifndef TESTS_XMLELEMENT_H
#define TESTS_XMLELEMENT_H

#include <expat.h>
#include <gtest/gtest.h>

#include <map>
#include <memory>
#include <string>
#include <vector>

struct XmlElement {
    std::string name;
    std::map<std::string, std::string> attributes;
    std::string text;  // of the element and its descendants
    std::vector<std::unique_ptr<XmlElement>> children;

    // All descendants with a name, and with a class.
    std::vector<const XmlElement*> All(const std::string& element,
                                       const std::string& ofClass = "") const {
        std::vector<const XmlElement*> found;
        for (const auto& child : children) {
            const auto classes = child->attributes.find("class");
            const bool classed = classes != child->attributes.end() && classes->second == ofClass;
            if (child->name == element && (ofClass.empty() || classed)) {
                found.push_back(child.get());
            }
            for (const XmlElement* below : child->All(element, ofClass)) found.push_back(below);
        }
        return found;
    }

    // Their texts.
    std::vector<std::string> Texts(const std::string& element,
                                   const std::string& ofClass = "") const {
        std::vector<std::string> texts;
        for (const XmlElement* found : All(element, ofClass)) texts.push_back(found->text);
        return texts;
    }
};

// The root of a text, whose only child is the document element. If the text is not well-formed, the
// test fails and the root has no children.
inline XmlElement ReadXml(const std::string& text) {
    XmlElement root;
    std::vector<XmlElement*> open{&root};
    const auto parser = std::unique_ptr<XML_ParserStruct, void (*)(XML_Parser)>(
        XML_ParserCreate("UTF-8"), XML_ParserFree);
    XML_SetUserData(parser.get(), &open);
    XML_SetElementHandler(
        parser.get(),
        [](void* data, const char* name, const char** attributes) {
            auto& stack = *static_cast<std::vector<XmlElement*>*>(data);
            auto& element = *stack.back()->children.emplace_back(std::make_unique<XmlElement>());
            element.name = name;
            for (; *attributes != nullptr; attributes += 2) {
                element.attributes[attributes[0]] = attributes[1];
            }
            stack.push_back(&element);
        },
        [](void* data, const char*) { static_cast<std::vector<XmlElement*>*>(data)->pop_back(); });
    XML_SetCharacterDataHandler(parser.get(), [](void* data, const char* piece, int length) {
        for (XmlElement* element : *static_cast<std::vector<XmlElement*>*>(data)) {
            element->text.append(piece, static_cast<std::size_t>(length));
        }
    });
    const auto size = static_cast<int>(text.size());
    if (XML_Parse(parser.get(), text.data(), size, 1) != XML_STATUS_OK) {
        ADD_FAILURE() << "line " << XML_GetCurrentLineNumber(parser.get()) << ": "
                      << XML_ErrorString(XML_GetErrorCode(parser.get()));
        return {};
    }
    return root;
}

#endif
