#pragma once

#include "SmartAttribute.h"

#include <QString>

/// Names and descriptions of SMART attributes by ID.
namespace AttributeCatalogue {

/// How a row is classed, from its flags; selects the row's icon.
enum class Category { Health, HealthPerformance, Information, Performance };

/// Short name of an attribute; "Unknown attribute" for IDs without one.
QString name(quint32 id);
/// Rich-text description of an attribute; " Unknown attribute" for IDs without one.
QString description(quint32 id);
/// Category of a row from its advisory and performance bits.
Category category(const SmartAttribute &attribute);
/// Icon name of a category ("attr_health", "attr_h_p", "attr_info", "attr_perf").
QString iconName(Category category);

} // namespace AttributeCatalogue
