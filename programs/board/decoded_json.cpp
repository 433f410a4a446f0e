#include "programs/board/decoded_json.h"

#include <cmath>

#include "boards/field_text.h"
#include "boards/sdr_record.h"
#include "boards/show_text.h"

namespace varnok::companion {
namespace {

Json FieldsJson(const boards::Section& section, bool hasBytes) {
  Json fields = Json::Array();
  for (const boards::Field& field : section.fields) {
    Json json = Json::Object();
    json.Set("name", field.label).Set("value", field.value);
    if (!field.encoding.empty()) json.Set("encoding", field.encoding);
    if (field.number && std::isfinite(*field.number))
      json.Set("number", *field.number).Set("unit", field.unit);
    if (hasBytes) json.Set("offset", field.offset).Set("length", field.length);
    fields.Add(json);
  }
  return fields;
}

}  // namespace

Json ControllerJson(const boards::Controller& controller) {
  Json json = Json::Object();
  json.Set("address", boards::Hex(controller.address)).Set("name", controller.name);
  return json.Set("fields", FieldsJson(boards::IdentitySection(controller), false));
}

Json SectionsJson(const boards::Decoded& decoded) {
  Json sections = Json::Array();
  for (const boards::Section& section : decoded.sections) {
    Json json = Json::Object();
    json.Set("id", section.id)
        .Set("title", section.title)
        .Set("offset", section.offset)
        .Set("length", section.length);
    if (section.freeBytes) json.Set("freeBytes", *section.freeBytes);
    if (section.isChecksumGood) json.Set("checksum", *section.isChecksumGood ? "good" : "bad");
    sections.Add(json.Set("fields", FieldsJson(section, true)));
  }
  return sections;
}

Json ProblemsJson(const boards::Decoded& decoded) {
  return ListOf(decoded.problems, [](const boards::Problem& problem) {
    return Json::Object().Set("offset", problem.offset).Set("text", problem.text);
  });
}

Json RecordJson(boards::ByteView record, const boards::Decoded& decoded) {
  const boards::SdrHead head = boards::HeadOf(record);
  Json json = Json::Object();
  json.Set("id", boards::Hex(head.id, 4))
      .Set("type", boards::Hex(head.type))
      .Set("typeName", head.typeName)
      .Set("name", head.name);
  json.Set("length", record.size()).Set("fields", FieldsJson(decoded.sections.front(), true));
  return json.Set("problems", ProblemsJson(decoded));
}

}  // namespace varnok::companion
