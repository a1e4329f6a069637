#pragma once

/// Whether the calling function runs beneath one of those of Qt 5 that end the process, or are not themselves any more,
/// when an allocation fails. No failure is injected there, for that would be a test of Qt.
bool isBeneathQtCaller();
