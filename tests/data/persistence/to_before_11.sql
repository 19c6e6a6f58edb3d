ALTER TABLE Conversation DROP COLUMN carriesScreenText;
ALTER TABLE ChatMessage DROP COLUMN toolStates;
PRAGMA user_version = 10000;
