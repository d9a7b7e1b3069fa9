# The dialogs of the editors (chooser, thesaurus manager, synonym editor, date editor, progress,
# EXIF viewer).
# Their layouts are Qt Designer forms in resources/; uic turns each into the
# ui_<Form>.h a source includes.
set_target_properties(vliptc_editors PROPERTIES
  AUTOUIC ON
  AUTOUIC_SEARCH_PATHS ${PROJECT_SOURCE_DIR}/resources)
target_sources(vliptc_editors PRIVATE
  dialogs/CheckListModel.cpp
  dialogs/KeywordChooser.cpp
  dialogs/ThesaurusManager.cpp
  dialogs/SynonymTreeModel.cpp
  dialogs/SynonymEditor.cpp
  dialogs/DateEditor.cpp
  dialogs/ProgressDialog.cpp
  dialogs/ReturnKey.cpp
  dialogs/ExifDialog.cpp
  ${PROJECT_SOURCE_DIR}/resources/ChooseElements.ui
  ${PROJECT_SOURCE_DIR}/resources/ThesaurusManager.ui
  ${PROJECT_SOURCE_DIR}/resources/SynonymEditor.ui
  ${PROJECT_SOURCE_DIR}/resources/DateEditor.ui
  ${PROJECT_SOURCE_DIR}/resources/Progress.ui
  ${PROJECT_SOURCE_DIR}/resources/ExifViewer.ui)
