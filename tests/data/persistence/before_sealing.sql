-- A store of a build from before texts were sealed, with one row in each table.
CREATE TABLE Conversation(rowid INTEGER PRIMARY KEY, id TEXT, title TEXT, createdAt INTEGER, updatedAt INTEGER,
    rollingSummary TEXT);
CREATE TABLE ChatMessage(rowid INTEGER PRIMARY KEY, id TEXT, roleRaw TEXT, content TEXT, createdAt INTEGER,
    statusRaw TEXT, errorMessage TEXT, attachmentID TEXT, attachmentName TEXT, toolSummary TEXT, conversation TEXT);
CREATE TABLE ImportedDocument(rowid INTEGER PRIMARY KEY, id TEXT, filename TEXT, fileExtension TEXT,
    fileSizeBytes INTEGER, extractedCharacterCount INTEGER, wasTruncated INTEGER, importedAt INTEGER);
INSERT INTO Conversation VALUES(1, '6F9619FF-8B86-D011-B42D-00C04FC964FF', 'Old title', 5, 6, 'Old summary');
INSERT INTO ChatMessage VALUES(1, 'AAAAAAAA-0000-0000-0000-000000000001', 'user', 'Old text', 7, 'delivered',
    'Old error', NULL, 'old.pdf', 'Old tools', '6F9619FF-8B86-D011-B42D-00C04FC964FF');
INSERT INTO ImportedDocument VALUES(1, 'BBBBBBBB-0000-0000-0000-000000000001', 'old.pdf', 'pdf', 9, 8, 1, 5);
