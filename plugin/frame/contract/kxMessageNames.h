#pragma once

/// The named messages that the host and the plug-in exchange.
namespace kxMessageName
{
constexpr const char CurrentFrameChanged[] = "currentFrameChanged";
constexpr const char CurrentFullFrameChanged[] = "currentFullFrameChanged";
constexpr const char FinishedPlayingGlobal[] = "finishedPlayingGlobal";
constexpr const char ChangedFPS[] = "changedFPS";
constexpr const char FramePlayerFrameChanged[] = "framePlayerFrameChanged";
constexpr const char FramePlayerLoopChanged[] = "framePlayerLoopChanged";
constexpr const char FramePlayerUserChanged[] = "framePlayerUserChanged";
constexpr const char AnimationStart[] = "animationStart";
constexpr const char DequeuedAnimation[] = "dequeuedAnimation";
constexpr const char Undo[] = "kxURManager::undo";
constexpr const char Redo[] = "kxURManager::redo";
/// The state of the scene is about to count, for undo, a file or a script: what glides to its place is there at once,
/// and what is shown for a while ends.
constexpr const char EndGlides[] = "endGlides";
constexpr const char TrashCleared[] = "trashCleared";
constexpr const char ShowAnimationWizard[] = "showAnimationWizard";
constexpr const char ChangedTransformation[] = "kxTransform::changedTransformation";
constexpr const char UpdateNavigator[] = "updateNavigator";
constexpr const char UpdateLight[] = "updateLight";
constexpr const char UberMaterialChanged[] = "UberMaterialChanged";
constexpr const char SelectedAnimations[] = "selectedAnimations";
constexpr const char ShowCurves[] = "showCurves";
constexpr const char FrameChangedCurveEditor[] = "frameChangedCurveEditor";
constexpr const char FrameChangedClipMaker[] = "frameChangedClipMaker";
constexpr const char UpdateClipScene[] = "updateClipScene";
constexpr const char UpdateGraphView[] = "updateGraphView";
constexpr const char UpdateAnimControlGUI[] = "updateAnimControlGUI";
constexpr const char TimeLineChangedPlay[] = "timeLineChangedPlay";
constexpr const char PasteKeys[] = "pasteKeys";
constexpr const char KeyAll[] = "keyAll";
constexpr const char ClipBlockSelected[] = "clipBlockSelected";
constexpr const char PastedAnimations[] = "pastedAnimations";
constexpr const char SelectedClipNode[] = "selectedClipNode";
constexpr const char CreateNewClip[] = "createNewClip";
constexpr const char GetSelectedMaterials[] = "getSelectedMaterials";
constexpr const char SelectMaterials[] = "selectMaterials";
constexpr const char GetVariants[] = "getVariants";
constexpr const char GetSequences[] = "getSequences";
constexpr const char GetClippingTransformNode[] = "getClippingTransformNode";
} // namespace kxMessageName
