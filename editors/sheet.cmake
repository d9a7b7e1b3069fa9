# The IPTC property sheet, its pages, and the Qt user interface of the drivers.
# The page layouts are Qt Designer files in resources/ (ui_<name>.h).
set_target_properties(vliptc_editors PROPERTIES AUTOUIC ON AUTOUIC_SEARCH_PATHS ${PROJECT_SOURCE_DIR}/resources)
target_sources(vliptc_editors PRIVATE
  ${PROJECT_SOURCE_DIR}/resources/PageDescription.ui
  ${PROJECT_SOURCE_DIR}/resources/PageImageInformation.ui
  ${PROJECT_SOURCE_DIR}/resources/PageOtherFields.ui
  sheet/MessageBox.cpp
  sheet/UserListChoices.cpp
  sheet/PageBase.cpp
  sheet/PageCaption.cpp
  sheet/FixedChoices.cpp
  sheet/ListField.cpp
  sheet/DateTimeField.cpp
  sheet/PageKeywords.cpp
  sheet/PageExtended.cpp
  sheet/IPTCPropertySheet.cpp
  qt/QtEditorUI.cpp)
