PRAGMA user_version = 1;
CREATE TABLE account (
    identifier TEXT PRIMARY KEY, email TEXT NOT NULL, server TEXT NOT NULL, type INTEGER NOT NULL,
    principal TEXT, home TEXT, inbox TEXT, outbox TEXT, defaultCalendar TEXT, notifications TEXT,
    methods INTEGER NOT NULL);
CREATE TABLE address (
    account TEXT NOT NULL REFERENCES account ON DELETE CASCADE, address TEXT NOT NULL);
CREATE TABLE calendar (
    account TEXT NOT NULL REFERENCES account ON DELETE CASCADE, href TEXT NOT NULL,
    name TEXT NOT NULL, cTag TEXT NOT NULL, description TEXT, ordering TEXT, color TEXT,
    syncToken TEXT NOT NULL, owner TEXT NOT NULL, zone TEXT NOT NULL, components INTEGER,
    PRIMARY KEY (account, href));
CREATE TABLE event (
    calendar TEXT NOT NULL, account TEXT NOT NULL, href TEXT NOT NULL, eTag TEXT NOT NULL,
    uid TEXT NOT NULL, summary TEXT NOT NULL, status TEXT NOT NULL, start INTEGER NOT NULL,
    end INTEGER NOT NULL, startZone TEXT, endZone TEXT, allDay INTEGER NOT NULL, rule TEXT,
    data TEXT NOT NULL,
    PRIMARY KEY (account, calendar, href),
    FOREIGN KEY (account, calendar) REFERENCES calendar (account, href) ON DELETE CASCADE);
CREATE TABLE notification (
    account TEXT NOT NULL REFERENCES account ON DELETE CASCADE, path TEXT NOT NULL,
    calendar TEXT NOT NULL, summary TEXT NOT NULL, date INTEGER NOT NULL, address TEXT NOT NULL,
    uid TEXT, organizerName TEXT, organizer TEXT, status INTEGER NOT NULL,
    isReply INTEGER NOT NULL, access INTEGER NOT NULL, PRIMARY KEY (account, path));
INSERT INTO account VALUES ('alice@example.com@cal.example.com', 'alice@example.com',
    'https://cal.example.com', 0, '/p/', '/c/', NULL, NULL, NULL, NULL, 1);
INSERT INTO account VALUES ('alice@example.com@https://cal.example.com', 'alice@example.com',
    'https://cal.example.com', 0, '/p/', '/c/', NULL, NULL, NULL, NULL, 1);
INSERT INTO account VALUES ('bob@cal.example.com', 'bob', 'https://cal.example.com', 0, NULL, NULL,
    NULL, NULL, NULL, NULL, 0);
INSERT INTO calendar VALUES ('alice@example.com@cal.example.com', '/c/work/', 'Work', 'ctag-7', NULL,
    '1', '#00FF00', 'token-7', '/p/', 'Europe/Berlin', 7);
INSERT INTO calendar VALUES ('alice@example.com@cal.example.com', '/c/empty/', 'Empty', 'ctag-1',
    'none', NULL, NULL, '', '/p/', 'UTC', NULL);
INSERT INTO calendar VALUES ('alice@example.com@https://cal.example.com', '/c/work/', 'Older', '',
    NULL, NULL, NULL, '', '/p/', 'UTC', 3);
INSERT INTO calendar VALUES ('bob@cal.example.com', '/c/bob/', 'Bob', '', NULL, NULL, NULL, '', '',
    'UTC', 2);
INSERT INTO event VALUES ('/c/work/', 'alice@example.com@cal.example.com', '/c/work/1.ics', '"1"',
    'u1', 'New Year', 'CONFIRMED', 1704103200000, 1704106800000, 'UTC', 'UTC', 0, NULL,
    'BEGIN:VCALENDAR
BEGIN:VEVENT
UID:u1
DTSTART:20240101T100000Z
DTEND:20240101T110000Z
END:VEVENT
END:VCALENDAR
');
INSERT INTO event VALUES ('/c/work/', 'alice@example.com@cal.example.com', '/c/work/2.ics', '"2"',
    'u2', 'Later', 'CONFIRMED', 0, 0, NULL, NULL, 1, NULL, 'BEGIN:VCALENDAR
BEGIN:VEVENT
UID:u2
DTSTART;VALUE=DATE:20240501
END:VEVENT
END:VCALENDAR
');
INSERT INTO event VALUES ('/c/work/', 'alice@example.com@cal.example.com', '/c/work/3.ics', '"3"',
    'u3', 'No text', 'CONFIRMED', 0, 0, NULL, NULL, 1, NULL, '');
INSERT INTO event VALUES ('/c/work/', 'alice@example.com@https://cal.example.com', '/c/work/4.ics',
    '"4"', 'u4', 'Older', 'CONFIRMED', 0, 0, NULL, NULL, 1, NULL, 'older');
INSERT INTO notification VALUES ('bob@cal.example.com', '/n/1', '/c/work/', 'Work', 0, 'bob', NULL,
    NULL, NULL, 0, 0, 0);
