#pragma once

// The words of OpenFX that are used here: actions, properties and their values, with types and dimensions as the
// published description gives them. A host compares the letters, so the spelling is the interface, with its oddities.

namespace lumiset::openfx {

namespace action {
inline constexpr const char* kLoad = "OfxActionLoad";
inline constexpr const char* kUnload = "OfxActionUnload";
inline constexpr const char* kDescribe = "OfxActionDescribe";
inline constexpr const char* kDescribeInContext = "OfxImageEffectActionDescribeInContext";
inline constexpr const char* kCreateInstance = "OfxActionCreateInstance";
inline constexpr const char* kDestroyInstance = "OfxActionDestroyInstance";
inline constexpr const char* kInstanceChanged = "OfxActionInstanceChanged";
inline constexpr const char* kPurgeCaches = "OfxActionPurgeCaches";
inline constexpr const char* kGetClipPreferences = "OfxImageEffectActionGetClipPreferences";
inline constexpr const char* kGetRegionOfDefinition = "OfxImageEffectActionGetRegionOfDefinition";
inline constexpr const char* kGetRegionsOfInterest = "OfxImageEffectActionGetRegionsOfInterest";
inline constexpr const char* kIsIdentity = "OfxImageEffectActionIsIdentity";
inline constexpr const char* kBeginSequenceRender = "OfxImageEffectActionBeginSequenceRender";
inline constexpr const char* kEndSequenceRender = "OfxImageEffectActionEndSequenceRender";
inline constexpr const char* kRender = "OfxImageEffectActionRender";
inline constexpr const char* kInteractDraw = "OfxInteractActionDraw";
inline constexpr const char* kPenMotion = "OfxInteractActionPenMotion";
inline constexpr const char* kPenDown = "OfxInteractActionPenDown";
inline constexpr const char* kPenUp = "OfxInteractActionPenUp";
inline constexpr const char* kKeyDown = "OfxInteractActionKeyDown";
inline constexpr const char* kKeyRepeat = "OfxInteractActionKeyRepeat";
inline constexpr const char* kLoseFocus = "OfxInteractActionLoseFocus";
}  // namespace action

namespace prop {
// Everywhere.
inline constexpr const char* kType = "OfxPropType";
inline constexpr const char* kName = "OfxPropName";
inline constexpr const char* kLabel = "OfxPropLabel";
inline constexpr const char* kShortLabel = "OfxPropShortLabel";
inline constexpr const char* kLongLabel = "OfxPropLongLabel";
inline constexpr const char* kTime = "OfxPropTime";
inline constexpr const char* kChangeReason = "OfxPropChangeReason";
inline constexpr const char* kVersion = "OfxPropVersion";
inline constexpr const char* kVersionLabel = "OfxPropVersionLabel";
inline constexpr const char* kDescription = "OfxPropPluginDescription";
inline constexpr const char* kInstanceData = "OfxPropInstanceData";
inline constexpr const char* kEffectInstance = "OfxPropEffectInstance";

// Effects.
inline constexpr const char* kContext = "OfxImageEffectPropContext";
inline constexpr const char* kSupportedContexts = "OfxImageEffectPropSupportedContexts";
inline constexpr const char* kSupportedDepths = "OfxImageEffectPropSupportedPixelDepths";
inline constexpr const char* kSupportedComponents = "OfxImageEffectPropSupportedComponents";
inline constexpr const char* kGrouping = "OfxImageEffectPluginPropGrouping";
inline constexpr const char* kThreadSafety = "OfxImageEffectPluginRenderThreadSafety";
inline constexpr const char* kHostFrameThreading = "OfxImageEffectPluginPropHostFrameThreading";
inline constexpr const char* kFieldRenderTwiceAlways = "OfxImageEffectPluginPropFieldRenderTwiceAlways";
inline constexpr const char* kSingleInstance = "OfxImageEffectPluginPropSingleInstance";
inline constexpr const char* kSupportsMultiResolution = "OfxImageEffectPropSupportsMultiResolution";
inline constexpr const char* kSupportsTiles = "OfxImageEffectPropSupportsTiles";
inline constexpr const char* kTemporalClipAccess = "OfxImageEffectPropTemporalClipAccess";
inline constexpr const char* kMultipleClipDepths = "OfxImageEffectPropMultipleClipDepths";
inline constexpr const char* kMultipleClipPars = "OfxImageEffectPropSupportsMultipleClipPARs";
inline constexpr const char* kOverlayV1 = "OfxImageEffectPluginPropOverlayInteractV1";
inline constexpr const char* kOverlayV2 = "OfxImageEffectPluginPropOverlayInteractV2";
inline constexpr const char* kSupportsOverlays = "OfxImageEffectPropSupportsOverlays";
inline constexpr const char* kProjectSize = "OfxImageEffectPropProjectSize";
inline constexpr const char* kProjectOffset = "OfxImageEffectPropProjectOffset";
inline constexpr const char* kProjectPixelAspect = "OfxImageEffectPropPixelAspectRatio";
inline constexpr const char* kFrameRate = "OfxImageEffectPropFrameRate";

// Clips and images.
inline constexpr const char* kFieldExtraction = "OfxImageClipPropFieldExtraction";
inline constexpr const char* kFieldOrder = "OfxImageClipPropFieldOrder";
inline constexpr const char* kPixelDepth = "OfxImageEffectPropPixelDepth";
inline constexpr const char* kComponents = "OfxImageEffectPropComponents";
inline constexpr const char* kPremultiplication = "OfxImageEffectPropPreMultiplication";
inline constexpr const char* kRenderScale = "OfxImageEffectPropRenderScale";
inline constexpr const char* kPixelAspect = "OfxImagePropPixelAspectRatio";
inline constexpr const char* kData = "OfxImagePropData";
inline constexpr const char* kBounds = "OfxImagePropBounds";
inline constexpr const char* kRegionOfDefinition = "OfxImagePropRegionOfDefinition";
inline constexpr const char* kRowBytes = "OfxImagePropRowBytes";
inline constexpr const char* kField = "OfxImagePropField";
inline constexpr const char* kPixelOrder = "OfxImageEffectPropPixelOrder";  // of one vendor's hosts

// Arguments of actions.
inline constexpr const char* kFieldToRender = "OfxImageEffectPropFieldToRender";
inline constexpr const char* kRenderWindow = "OfxImageEffectPropRenderWindow";
inline constexpr const char* kRegionOfDefinitionOut = "OfxImageEffectPropRegionOfDefinition";
inline constexpr const char* kRegionOfInterestOfSource = "OfxImageClipPropRoI_Source";
inline constexpr const char* kFrameVarying = "OfxImageEffectFrameVarying";

// Parameters.
inline constexpr const char* kHint = "OfxParamPropHint";
inline constexpr const char* kParent = "OfxParamPropParent";
inline constexpr const char* kAnimates = "OfxParamPropAnimates";
inline constexpr const char* kCanUndo = "OfxParamPropCanUndo";
inline constexpr const char* kEvaluateOnChange = "OfxParamPropEvaluateOnChange";
inline constexpr const char* kDefault = "OfxParamPropDefault";
inline constexpr const char* kMin = "OfxParamPropMin";
inline constexpr const char* kMax = "OfxParamPropMax";
inline constexpr const char* kDisplayMin = "OfxParamPropDisplayMin";
inline constexpr const char* kDisplayMax = "OfxParamPropDisplayMax";
inline constexpr const char* kIncrement = "OfxParamPropIncrement";
inline constexpr const char* kDigits = "OfxParamPropDigits";
inline constexpr const char* kDoubleType = "OfxParamPropDoubleType";
inline constexpr const char* kDefaultCoordinates = "OfxParamPropDefaultCoordinateSystem";
inline constexpr const char* kDimensionLabel = "OfxParamPropDimensionLabel";
inline constexpr const char* kChoiceOption = "OfxParamPropChoiceOption";
inline constexpr const char* kStringMode = "OfxParamPropStringMode";
inline constexpr const char* kFilePathExists = "OfxParamPropStringFilePathExists";
inline constexpr const char* kGroupOpen = "OfxParamPropGroupOpen";
inline constexpr const char* kPageChild = "OfxParamPropPageChild";
inline constexpr const char* kPageOrder = "OfxPluginPropParamPageOrder";

// Overlays.
inline constexpr const char* kDrawContext = "OfxInteractPropDrawContext";
inline constexpr const char* kPixelScale = "OfxInteractPropPixelScale";
inline constexpr const char* kPenPosition = "OfxInteractPropPenPosition";
inline constexpr const char* kSlaveToParam = "OfxInteractPropSlaveToParam";
inline constexpr const char* kKeySym = "kOfxPropKeySym";
}  // namespace prop

namespace value {
inline constexpr const char* kDepthByte = "OfxBitDepthByte";
inline constexpr const char* kDepthShort = "OfxBitDepthShort";
inline constexpr const char* kDepthHalf = "OfxBitDepthHalf";
inline constexpr const char* kDepthFloat = "OfxBitDepthFloat";
inline constexpr const char* kRgba = "OfxImageComponentRGBA";
inline constexpr const char* kRgb = "OfxImageComponentRGB";
inline constexpr const char* kOpaque = "OfxImageOpaque";
inline constexpr const char* kPremultiplied = "OfxImageAlphaPremultiplied";
inline constexpr const char* kUnpremultiplied = "OfxImageAlphaUnPremultiplied";
inline constexpr const char* kFieldNone = "OfxFieldNone";
inline constexpr const char* kFieldLower = "OfxFieldLower";
inline constexpr const char* kFieldUpper = "OfxFieldUpper";
inline constexpr const char* kFieldBoth = "OfxFieldBoth";
inline constexpr const char* kFilter = "OfxImageEffectContextFilter";
inline constexpr const char* kGeneral = "OfxImageEffectContextGeneral";
inline constexpr const char* kFullySafe = "OfxImageEffectRenderFullySafe";
inline constexpr const char* kPixelOrderBgra = "OfxImagePixelOrderBGRA";
inline constexpr const char* kUserEdited = "OfxChangeUserEdited";
inline constexpr const char* kTypeParameter = "OfxTypeParameter";
inline constexpr const char* kMessageError = "OfxMessageError";
inline constexpr const char* kMessageQuestion = "OfxMessageQuestion";
inline constexpr const char* kClipSource = "Source";
inline constexpr const char* kClipOutput = "Output";
inline constexpr const char* kParamDouble = "OfxParamTypeDouble";
inline constexpr const char* kParamDouble2D = "OfxParamTypeDouble2D";
inline constexpr const char* kParamRgb = "OfxParamTypeRGB";
inline constexpr const char* kParamBoolean = "OfxParamTypeBoolean";
inline constexpr const char* kParamChoice = "OfxParamTypeChoice";
inline constexpr const char* kParamString = "OfxParamTypeString";
inline constexpr const char* kParamPushButton = "OfxParamTypePushButton";
inline constexpr const char* kParamGroup = "OfxParamTypeGroup";
inline constexpr const char* kParamPage = "OfxParamTypePage";
inline constexpr const char* kDoublePlain = "OfxParamDoubleTypePlain";
inline constexpr const char* kDoublePosition = "OfxParamDoubleTypeXYAbsolute";
inline constexpr const char* kCoordinatesNormalised = "OfxParamCoordinatesNormalised";
inline constexpr const char* kStringFilePath = "OfxParamStringIsFilePath";
}  // namespace value

}  // namespace lumiset::openfx
