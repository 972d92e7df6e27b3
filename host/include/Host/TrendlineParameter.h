#pragma once

#include "Host/KXString.h"

/// What a trend line is asked for. The numbers travel in byte forms.
class TrendlineParameter {
 public:
  /// The curve that is laid through the points.
  enum ModelType { kLinear, kPower, kExponential, kLogarithmic, kPolynomial, kMovingAverage };
  /// What is given of it: its value at each point, the curve as a text, or the place of each point in the series.
  enum ResultType { kValue, kModel, kSequence };

  /// The word for it, such as "MOVING_AVERAGE". It must be one of the enumerators.
  static KXString ToString(ModelType type);
  static KXString ToString(ResultType type);
};
