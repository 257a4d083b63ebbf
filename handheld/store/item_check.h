// Does a stored item keep what the object model promises? For store_check.
#pragma once

#include <functional>
#include <string>

#include "handheld/store/exception_row.h"

namespace ce::host {

class ItemCheck {
 public:
  // `report` is given one line a problem.
  ItemCheck(const ItemLimits& limits, std::function<void(std::string)> report);

  // `name` is what lines begin with: "contact 7".
  void Check(const std::string& name, const ContactRow& contact) const;
  void Check(const std::string& name, const AppointmentRow& appointment) const;
  void Check(const std::string& name, const TaskRow& task) const;
  // Of this appointment.
  void Check(const std::string& name, const AppointmentRow& appointment,
             const ExceptionRow& exception) const;

 private:
  void Add(const std::string& name, const std::string& problem) const;
  void Date(const std::string& name, const char* property, DATE date) const;
  template <typename Kind>
  void Texts(const std::string& name, const Kind& fields) const;
  void Fields(const std::string& name, const AppointmentFields& fields) const;
  void Recurrence(const std::string& name, const std::optional<Series>& series,
                  local_days start) const;

  const ItemLimits limits_;
  const std::function<void(std::string)> report_;
};

}  // namespace ce::host
