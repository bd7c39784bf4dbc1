#pragma once

// Call before the application is created. Qt and this program treat texts, file names and keyboard
// input as UTF-8. In a locale with another encoding some typed characters would be lost, so the
// process then uses C.UTF-8.
void useUtf8();
