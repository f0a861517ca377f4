// The values of the document settings, group by group, in the order of declaration. The names are registry names. Not
// public.
#pragma once

#include <numbers>

#include "share/settings/settings_group.h"

namespace document_settings {

// Deviations and diameters are in metres (1.27e-05 is half a thousandth of an inch), angles in radians. "SeqFaceFeat"
// to "SeqMultiSurfaceFeat" rank the kinds of features, from 0.
constexpr SettingsRow kFeatRows[] = {
    {_T("3AxisPartDeviation"), 1.27e-05},
    {_T("SplineDeviation"), 2.54e-05},
    {_T("ForceFacetDeviation"), 0},
    {_T("MillFeatureFaceSelectionMethod"), 0},
    {_T("MillFeatureEdgeSelectionMethod"), 0},
    {_T("MillFeatureTaperFilletCheckState"), 0},
    {_T("MillFeatureContourSelectCheckState"), 0},
    {_T("EMFRemoveHoles"), 0},
    {_T("EMFRemoveNonHoles"), 0},
    {_T("EMFCondenseHoles"), 0},
    {_T("EMFAutoFaceFeatCreation"), 0},
    {_T("EMFAutoOpenPktFeatCreation"), 0},
    {_T("EMFAutoPeriFeatCreation"), 0},
    {_T("PeriFeatType"), 0},
    {_T("EMFCheckAccessibility"), 0},
    {_T("EMFRemoveBoss"), 0},
    {_T("EMF3AxisFeaturesCreation"), 0},
    {_T("FeatureTypeComboValue"), 0},
    {_T("FeatureExtentStock"), 0},
    {_T("FeatureExtentOffset"), 0},
    {_T("FeatureExtentThru"), 0},
    {_T("LocalFeatureRecognitionOption"), 0},
    {_T("SetupBasedFeatRecognition"), 0},
    {_T("EMFSimplifyFeatures"), 0},
    {_T("RecognizeFeatByDepth"), 0},
    {_T("EMFRecognition"), 0},
    {_T("SeqFaceFeat"), 0},
    {_T("ExtendHolesUptoStock"), 0},
    {_T("EMFAutoCurveFeatCreation"), 0},
    {_T("EMFPlanarEdgesOnly"), 0},
    {_T("RecognizeNonUniformChamFil"), 0},
    {_T("ProfileFeatureWizardPosition"), POINT{10, 10}},
    {_T("3AxisFeatureWizardposition"), POINT{10, 10}},
    {_T("EDMFeatureWizardPosition"), POINT{10, 10}},
    {_T("ProfileFeatureWizardDetectFillets"), 1},
    {_T("EMFHoles"), 1},
    {_T("EMFNonHoles"), 1},
    {_T("AssociateFeatures"), 1},
    {_T("EMFBoss"), 1},
    {_T("EMFGenericFeaturesCreation"), 1},
    {_T("EMFFeatCreationStyle"), 1},
    {_T("MillPatterns"), 1},
    {_T("MillFeatureCreationStyle"), 1},
    {_T("SeqPerimeterFeat"), 1},
    {_T("SortOrderFaceFeat"), 1},
    {_T("SortOrderPerimeterFeat"), 1},
    {_T("SortOrderOpenPktFeat"), 1},
    {_T("SortOrderBossFeat"), 1},
    {_T("SortOrderNonHoleFeat"), 1},
    {_T("SortOrderHoleFeat"), 1},
    {_T("SortMultiSurfaceFeat"), 1},
    {_T("RecognizeCounterboreHoles"), 1},
    {_T("EMFHolesMaxUpperDia"), 0.0508},
    {_T("EMFHolesPartialWrapAngle"), 2 * std::numbers::pi},
    {_T("SeqOpenPktFeat"), 2},
    {_T("SeqBossFeat"), 3},
    {_T("SeqNonHoleFeat"), 4},
    {_T("SeqHoleFeat"), 5},
    {_T("SeqMultiSurfaceFeat"), 6},
    {_T("EMFAutoCurveFeat_MaxFaceAngle"), std::numbers::pi / 12},
};

constexpr SettingsRow kColorRows[] = {
    {_T("3AxisCutEntities"), SettingsColor{0x00FF00}},
    {_T("SetupXY"), SettingsColor{0x00FF00}},
    {_T("Feature"), SettingsColor{0x00FF00}},
    {_T("SectioningColor"), SettingsColor{0x00FF00}},
    {_T("ProbeCycleMoves"), SettingsColor{0x00FF00}},
    {_T("3AxisAvoidEntities"), SettingsColor{0x0000FF}},
    {_T("ProbeToolPart"), SettingsColor{0x0000FF}},
    {_T("CollisionColor"), SettingsColor{0x0000FF}},
    {_T("RapidTP"), SettingsColor{0x0000FF}},
    {_T("3AxisContainEntities"), SettingsColor{0x00FFFF}},
    {_T("FinishToolPath"), SettingsColor{0x00FFFF}},
    {_T("3AxisFinishToolPath"), SettingsColor{0x00FFFF}},
    {_T("ToolVector"), SettingsColor{0x00FFFF}},
    {_T("SetupAxis"), SettingsColor{0xB40000}},
    {_T("RoughToolPath"), SettingsColor{0xA0A000}},
    {_T("3AxisRoughToolPath"), SettingsColor{0xA0A000}},
    {_T("FaceMillToolPath"), SettingsColor{0xA0A000}},
    {_T("DrillToolPath"), SettingsColor{0xFF0000}},
    {_T("BoreToolPath"), SettingsColor{0xFF0000}},
    {_T("ReamToolPath"), SettingsColor{0xFF0000}},
    {_T("TapToolPath"), SettingsColor{0xFF0000}},
    {_T("CenterDrillToolPath"), SettingsColor{0xFF0000}},
    {_T("EntryDrillToolPath"), SettingsColor{0xFF0000}},
    {_T("CounterSinkToolPath"), SettingsColor{0xFF0000}},
    {_T("ThreadMillToolPath"), SettingsColor{0xFF0000}},
    {_T("Highlight"), SettingsColor{0xFF0000}},
    {_T("PencilMillToolPath"), SettingsColor{0xFF0000}},
    {_T("SimulationText"), SettingsColor{0xFF0000}},
    {_T("FeatNodeText"), SettingsColor{0xFF0000}},
    {_T("OperNodeText"), SettingsColor{0xFF0000}},
    {_T("MultiAxTlp"), SettingsColor{0xFF0000}},
    {_T("ProbeProtectedMoves"), SettingsColor{0xFF0000}},
    {_T("ColorTlpPlungeMove"), SettingsColor{0xFF0000}},
    {_T("ColorTlpLeadinMove"), SettingsColor{0xFF0000}},
    {_T("ColorTlpLeadoutMove"), SettingsColor{0xFF0000}},
    {_T("ColorTlpLinkMove"), SettingsColor{0xFF0000}},
    {_T("Workpiece"), SettingsColor{0x818181}},
    {_T("ToolholderPart"), SettingsColor{0x818181}},
    {_T("ToolBlockPart"), SettingsColor{0x818181}},
    {_T("SimulationBackground"), SettingsColor{0xFFFFFF}},
    {_T("AvoidEntities"), SettingsColor{0x507FFF}},
    {_T("TargetPart"), SettingsColor{0x2DF0AF}},
    {_T("ToolPart"), SettingsColor{0x5FBDE8}},
    {_T("MillToolNonCenterCutting"), SettingsColor{0xC0C0C0}},
    {_T("ToolShoulder"), SettingsColor{0xC0C0C0}},
    {_T("ToolshankPart"), SettingsColor{0xC0C0C0}},
    {_T("HiddenMoveColor"), SettingsColor{0xC0C0C0}},
    {_T("Fixture"), SettingsColor{0x6E6E6E}},
    {_T("DynHilite"), SettingsColor{0x005BFF}},
    {_T("UseFeedColors"), 0},
    {_T("Lock"), SettingsColor{0x790079}},
    {_T("HiddenDisplayNode"), SettingsColor{0x797900}},
    {_T("SuppressDisplayNode"), SettingsColor{0x808080}},
    {_T("ToolpathEndPoints"), SettingsColor{0xFFFF00}},
};

constexpr SettingsRow kOpernRows[] = {
    {_T("InsOpWizardForMSHolePosition"), POINT{10, 10}},
    {_T("ProcessToolpathBy"), 1},
    {_T("OmitMillHolderMessage"), 0},
    {_T("ChangeHolderIdValue"), 2},
    {_T("BarrelToolWarningUserID"), 1},
};

constexpr SettingsRow kSimulationRows[] = {
    {_T("CoOrdinateDisplay"), 0},
    {_T("MaxFacetDeviation"), 1e-05},
    {_T("TurboResolution"), 500},
    {_T("ComparisonTolerance"), 0.0001},
    {_T("WorkpieceDisplayType"), 0},
    {_T("ToolDisplay"), 0},
    {_T("SimplifiedThreading"), 0},
    {_T("FacetTolSetByUser"), 0},
    {_T("AddTarget"), 1},
    {_T("LoadAllFixture"), 1},
    {_T("TessellationQuality"), 100},
    {_T("Rotation4Axis"), 0},
    {_T("Rotation5Axis"), 0},
    {_T("AnimSpeed"), 3},
    {_T("NumberCutsReverseDisplay"), 0},
    {_T("MaxFacetDevTarget"), 1e-05},
    {_T("SWTolLimits"), 0},
    {_T("TessQualityTarget"), 100},
};

constexpr SettingsRow kTurnColorRows[] = {
    {_T("TurnFeatureExtents"), SettingsColor{0xFF0000}},  {_T("TurnRoughToolPath"), SettingsColor{0x0000FF}},
    {_T("TurnFinishToolPath"), SettingsColor{0x00FFFF}},  {_T("BoreRoughToolPath"), SettingsColor{0x008CFF}},
    {_T("BoreFinishToolPath"), SettingsColor{0x2DFFAF}},  {_T("CutOffToolPath"), SettingsColor{0xFF00FF}},
    {_T("GrooveRoughToolPath"), SettingsColor{0x19468C}}, {_T("GrooveFinishToolPath"), SettingsColor{0xB4E1F0}},
    {_T("FaceRoughToolPath"), SettingsColor{0xB48246}},   {_T("FaceFinishToolPath"), SettingsColor{0x8C8778}},
    {_T("TurnDrillToolPath"), SettingsColor{0xFF8C00}},   {_T("TurnCenterDrillToolPath"), SettingsColor{0x20A5DA}},
    {_T("TurnReamToolPath"), SettingsColor{0xAFE1F0}},    {_T("TurnThreadToolPath"), SettingsColor{0x8C8778}},
    {_T("WorkInProcess"), SettingsColor{0x0078FF}},       {_T("Chuck"), SettingsColor{0x6E6E6E}},
    {_T("SubSpindleToolPath"), SettingsColor{0x00D7FF}},
};

constexpr SettingsRow kRebuildRows[] = {
    {_T("DelFeatWithoutOpers"), 1}, {_T("DelFeatWithOpers"), 0},     {_T("DelChildFeatsFromPatt"), 1},
    {_T("UpdateMill"), 0},          {_T("UpdateTurn"), 0},           {_T("UpdateWIP"), 1},
    {_T("Update3Axis"), 1},         {_T("GenNewOper"), 0},           {_T("LightRebuild"), 0},
    {_T("GenTpOperWOTp"), 0},       {_T("AddNewFeatToFeatTree"), 1},
};

constexpr SettingsRow kWireEDMColorRows[] = {
    {_T("EDMRough"), SettingsColor{0x0000FF}},
    {_T("EDMTab"), SettingsColor{0x008CFF}},
    {_T("EDMSkim"), SettingsColor{0xAFE1F0}},
    {_T("EDMWireframe"), SettingsColor{0xFF8C00}},
};

constexpr SettingsRow kEdmFeatRows[] = {
    {_T("EDMDie"), 1},       {_T("EDMRmDie"), 0},      {_T("EDMOpenProf"), 1}, {_T("EDMRmOpenProf"), 0},
    {_T("EDMHole"), 1},      {_T("EDMRmHole"), 0},     {_T("EDMCSHole"), 1},   {_T("EDMRmCSHole"), 0},
    {_T("EDMCBHole"), 1},    {_T("EDMRmCBHole"), 0},   {_T("EDMMSHole"), 1},   {_T("EDMRmMSHole"), 0},
    {_T("EDMPerimeter"), 1}, {_T("EDMRPerimeter"), 0},
};

constexpr SettingsRow kConfigRows[] = {
    {_T("ConfigurationSave"), 1},
    {_T("UseKVConfig"), 1},
};

constexpr SettingsRow kNodeDisplayRows[] = {
    {_T("NodeDisplayFeatTree"), _T("10000000")},
    {_T("NodeDisplayOperTree"), _T("10000000")},
    {_T("NodeDisplayToolTree"), _T("10000000")},
    {_T("LinkAsmFeatName"), 1},
};

constexpr SettingsRow kTurnFeatRows[] = {
    {_T("TurnSectionPlanePosition"), POINT{10, 10}},
    {_T("TurnFeatureCreationStyle"), 1},
};

constexpr SettingsRow kVRMLWriterRows[] = {
    {_T("VRMLOutputFileType"), 2},
};

}  // namespace document_settings
