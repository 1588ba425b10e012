#pragma once

/// @file
/// Everything that a host needs to share files, without the share sheet.

#include <QuillbayCloud/Classes/SessionController.h>
#include <QuillbayCloud/model/QuillbayCloudError.h>
#include <QuillbayCloud/model/Session.h>
#include <QuillbayCloud/model/SessionActivity.h>
#include <QuillbayCloud/model/SessionConfiguration.h>
#include <QuillbayCloud/model/SessionContext.h>
#include <QuillbayCloud/model/SessionLinkType.h>
#include <QuillbayCloud/service/AmazonError.h>
#include <QuillbayCloud/service/Configuration.h>
#include <QuillbayCloud/service/ItemUploadUrl.h>
#include <QuillbayCloud/ui/Localized.h>
#include <QuillbayPlatform/MainQueue.h>
#include <QuillbayPlatform/NetworkSettings.h>
