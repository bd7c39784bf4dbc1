#pragma once

// Call it before the application is created. Qt and this program treat texts, file names and keys
// as UTF-8. Under a locale of another encoding some typed characters would be lost, so the process
// then uses the plain UTF-8 locale.
void useUtf8();
