/// @file
/// The whole public interface.
#pragma once

#include <morvane/Export.h>
#include <morvane/common/Attributes.h>
#include <morvane/common/Criterion.h>
#include <morvane/common/ImageCompare.h>
#include <morvane/common/PixelTypes.h>
#include <morvane/connexity/AttributeOpening.h>
#include <morvane/connexity/Conditions.h>
#include <morvane/connexity/ConnectedZoneScan.h>
#include <morvane/connexity/Connexity.h>
#include <morvane/connexity/Flooding.h>
#include <morvane/connexity/Labelling.h>
#include <morvane/connexity/MaxTree.h>
#include <morvane/connexity/RegionalExtrema.h>
#include <morvane/connexity/UltimateAttributeOpening.h>
#include <morvane/connexity/ZoneMeasures.h>
#include <morvane/features/NormalComputation.h>
#include <morvane/features/Normals.h>
#include <morvane/filters/AlternatingSequentialFilters.h>
#include <morvane/filters/NonLocalMeans.h>
#include <morvane/filters/Sampling.h>
#include <morvane/filters/Statistics.h>
#include <morvane/geodesy/GeodesicOperators.h>
#include <morvane/geodesy/Reconstruction.h>
#include <morvane/visual/ColorMaps.h>
