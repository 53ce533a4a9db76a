// Resource and control ids of the advanced page and of the updates, proxy,
// cloud-feedback and About dialogs in the language module. Every language
// module carries the same ids. Control ids below 6350 (and 32793) are the
// ones the scanning process's installers and translations already know;
// new ids come from 6350-6449.
#pragma once

// ---- Templates and bitmaps ----
#define IDD_ADVANCED_PAGE 6350
#define IDD_UPDATES 6351
#define IDD_PROXY_SETTINGS 6352
#define IDD_CLOUD_FEEDBACK 6353
#define IDD_ABOUT 6354
#define IDB_ABOUT_BANNER 6355  // the banner when the installation names none

// ---- Advanced page ----
#define IDC_ADV_DELETE_NOW 6068
#define IDC_ADV_DELETE_DELETED 6069
#define IDC_ADV_PURGE_DAYS 6070
#define IDC_ADV_PURGE_SPIN 6086
#define IDC_ADV_NOTIFY_ICON 6087
#define IDC_ADV_AUTO_MOVED 6090
#define IDC_ADV_HEADING 6091
#define IDC_ADV_PURGE_BEFORE 6360
#define IDC_ADV_PURGE_AFTER 6361
#define IDC_ADV_DELETE_NOW_NOTE 6362
#define IDC_ADV_NOTIFY_HEADING 6363

// ---- Updates ----
#define IDC_UPD_GROUP 6370
#define IDC_UPD_ADDIN_LABEL 6371
#define IDC_UPD_ADDIN_VERSION 6372
#define IDC_UPD_ENGINE_LABEL 6373
#define IDC_UPD_ENGINE_VERSION 6374
#define IDC_UPD_PATTERN_LABEL 6375
#define IDC_UPD_PATTERN_VERSION 6376
#define IDC_UPD_LAST_LABEL 6377
#define IDC_UPD_LAST_UPDATE 6378
#define IDC_UPD_STATUS 6379
#define IDC_UPD_UPDATE_NOW 6380
#define IDC_UPD_SCHEDULE_GROUP 6381
#define IDC_UPD_ENABLE_SCHEDULE 6382
#define IDC_UPD_INTERVAL_BEFORE 6383
#define IDC_UPD_INTERVAL 6384
#define IDC_UPD_INTERVAL_SPIN 6385
#define IDC_UPD_INTERVAL_AFTER 6386
#define IDC_UPD_SHOW_PROGRESS 6387
#define IDC_UPD_PROXY 6388

// ---- Proxy ----
#define IDC_PROXY_HOST 6033
#define IDC_PROXY_USER 6034
#define IDC_PROXY_PORT 6035
#define IDC_PROXY_PASSWORD 6036
#define IDC_PROXY_ENABLE 6390
#define IDC_PROXY_HOST_LABEL 6391
#define IDC_PROXY_PORT_LABEL 6392
#define IDC_PROXY_PORT_SPIN 6393
#define IDC_PROXY_USER_LABEL 6394
#define IDC_PROXY_PASSWORD_LABEL 6395

// ---- Cloud feedback ----
#define IDC_CRX_YES 6016
#define IDC_CRX_NO 6017
#define IDC_CRX_LINK 32793
#define IDC_CRX_INTRO 6400
#define IDC_CRX_YES_DESC 6401
#define IDC_CRX_NO_DESC 6402
#define IDC_CRX_LINK_NOTE 6403

// ---- About ----
#define IDC_ABOUT_BANNER 6410
#define IDC_ABOUT_PRODUCT 6411
#define IDC_ABOUT_COMPANY 6412
#define IDC_ABOUT_VERSION_LABEL 6413
#define IDC_ABOUT_VERSION 6414
#define IDC_ABOUT_ENGINE_LABEL 6415
#define IDC_ABOUT_ENGINE 6416
#define IDC_ABOUT_PATTERN_LABEL 6417
#define IDC_ABOUT_PATTERN 6418
#define IDC_ABOUT_COPYRIGHT 6419
#define IDC_ABOUT_WARNING 6420
