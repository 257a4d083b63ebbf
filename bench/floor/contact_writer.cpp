#include <array>
#include <unordered_map>

#include "bench/floor/contact_table.h"
#include "bench/floor/record_writer.h"

namespace floors {
namespace {

std::string InsertSql() {
  std::string columns = "oid";
  std::string values = "?1";
  int parameter = 1;
  for (const ContactField& field : kContactFields) {
    columns.append(", ").append(field.column);
    values.append(", ?").append(std::to_string(++parameter));
  }
  return "INSERT INTO contacts (" + columns + ") VALUES (" + values + ")";
}

class ContactWriter final : public RecordWriter {
 public:
  explicit ContactWriter(const Database& store) : insert_(store, InsertSql()) {
    for (std::size_t i = 0; i < kContactFields.size(); ++i) {
      if (!kContactFields[i].element.empty()) fields_.emplace(kContactFields[i].element, i);
    }
  }

  void Write(std::int64_t oid, const xmlNode* record) override {
    texts_.fill({});
    categories_.clear();
    for (const xmlNode* child = record->children; child; child = child->next) Take(child);
    insert_.Bind(1, oid);
    for (std::size_t i = 0; i < kContactFields.size(); ++i) Bind(i);
    insert_.Run();
  }

 private:
  void Take(const xmlNode* child) {
    if (NameOf(child) == "EMAIL_ADDRESSES") {
      for (const xmlNode* email = child->children; email; email = email->next) {
        texts_[fields_.at(TextOf(Child(email, "TYPE")))] = TextOf(Child(email, "NAME"));
      }
      return;
    }
    const auto field = fields_.find(NameOf(child));
    if (field == fields_.end()) return;
    if (kContactFields[field->second].kind == FieldKind::kCategories) {
      JoinCategories(child, categories_);
      texts_[field->second] = categories_;
    } else {
      texts_[field->second] = TextOf(child);
    }
  }

  void Bind(std::size_t field) {
    const int parameter = static_cast<int>(field) + 2;
    if (kContactFields[field].kind == FieldKind::kDate) {
      insert_.Bind(parameter, DateOf(texts_[field]));
    } else {
      insert_.Bind(parameter, texts_[field]);
    }
  }

  Query insert_;
  std::unordered_map<std::string_view, std::size_t> fields_;
  std::array<std::string_view, kContactFields.size()> texts_;
  std::string categories_;
};

}  // namespace

std::unique_ptr<RecordWriter> MakeContactWriter(const Database& store) {
  return std::make_unique<ContactWriter>(store);
}

}  // namespace floors
