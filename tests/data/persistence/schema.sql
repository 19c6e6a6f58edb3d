-- What a new store holds, one statement on each line as SQLite keeps it. Stores of every installation look so:
-- a change here needs a new version and a way to bring them up to date.
CREATE TABLE Conversation(rowid INTEGER PRIMARY KEY, id TEXT NOT NULL, sealedTitle TEXT NOT NULL, createdAt INTEGER NOT NULL, updatedAt INTEGER NOT NULL, sealedRollingSummary TEXT, personaPreset TEXT, spaceRaw TEXT, carriesScreenText INTEGER, sealedDraft TEXT, carriesPicture INTEGER)
CREATE UNIQUE INDEX Conversation_id ON Conversation(id)
CREATE INDEX Conversation_plain ON Conversation(id) WHERE ((sealedTitle<>'' AND substr(sealedTitle,1,6)<>char(1)||'KVT1:') OR (sealedRollingSummary<>'' AND substr(sealedRollingSummary,1,6)<>char(1)||'KVT1:') OR (sealedDraft<>'' AND substr(sealedDraft,1,6)<>char(1)||'KVT1:'))
CREATE TABLE ChatMessage(rowid INTEGER PRIMARY KEY, id TEXT NOT NULL, roleRaw TEXT NOT NULL, sealedContent TEXT NOT NULL, createdAt INTEGER NOT NULL, statusRaw TEXT NOT NULL, sealedErrorMessage TEXT, attachmentID TEXT, sealedAttachmentName TEXT, sealedToolSummary TEXT, sourceDomains TEXT, hitTokenLimit INTEGER, placeRaw TEXT, conversation TEXT, toolStates TEXT, versionGroup TEXT, answers TEXT, isSetAside INTEGER, sealedToolDetails TEXT)
CREATE UNIQUE INDEX ChatMessage_id ON ChatMessage(id)
CREATE INDEX ChatMessage_plain ON ChatMessage(id) WHERE ((sealedContent<>'' AND substr(sealedContent,1,6)<>char(1)||'KVT1:') OR (sealedErrorMessage<>'' AND substr(sealedErrorMessage,1,6)<>char(1)||'KVT1:') OR (sealedAttachmentName<>'' AND substr(sealedAttachmentName,1,6)<>char(1)||'KVT1:') OR (sealedToolSummary<>'' AND substr(sealedToolSummary,1,6)<>char(1)||'KVT1:') OR (sealedToolDetails<>'' AND substr(sealedToolDetails,1,6)<>char(1)||'KVT1:'))
CREATE TABLE ImportedDocument(rowid INTEGER PRIMARY KEY, id TEXT NOT NULL, sealedFilename TEXT NOT NULL, fileExtension TEXT NOT NULL, fileSizeBytes INTEGER NOT NULL, extractedCharacterCount INTEGER NOT NULL, wasTruncated INTEGER NOT NULL, importedAt INTEGER NOT NULL)
CREATE UNIQUE INDEX ImportedDocument_id ON ImportedDocument(id)
CREATE INDEX ImportedDocument_plain ON ImportedDocument(id) WHERE ((sealedFilename<>'' AND substr(sealedFilename,1,6)<>char(1)||'KVT1:'))
CREATE INDEX ChatMessage_conversation ON ChatMessage(conversation)
CREATE INDEX Conversation_updatedAt ON Conversation(updatedAt)
