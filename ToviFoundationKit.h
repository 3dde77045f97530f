#pragma once

/// The one include of a host. See the headers below for what there is; each is a manual page.

#include <ToviFoundationKit/ToviFoundationKitInitialize.h>

#include <ToviFoundationKit/Foundation/NSError.h>
#include <ToviFoundationKit/Runtime/Additions.h>
#include <ToviFoundationKit/Runtime/Cast.h>
#include <ToviFoundationKit/Runtime/FilesystemPath.h>
#include <ToviFoundationKit/Runtime/Message.h>
#include <ToviFoundationKit/Runtime/NSAssertionHandler.h>
#include <ToviFoundationKit/Runtime/NSException.h>
#include <ToviFoundationKit/Runtime/NSInvocation.h>
#include <ToviFoundationKit/Runtime/NSLog.h>
#include <ToviFoundationKit/Runtime/NSNumber.h>
#include <ToviFoundationKit/Runtime/NSObject.h>
#include <ToviFoundationKit/Runtime/NSString.h>
#include <ToviFoundationKit/Runtime/NSValue.h>
#include <ToviFoundationKit/Runtime/StringBuilder.h>

#include <ToviFoundationKit/Foundation/Clock.h>
#include <ToviFoundationKit/Foundation/NSArchiver.h>
#include <ToviFoundationKit/Foundation/NSBundle.h>
#include <ToviFoundationKit/Foundation/NSCalendar.h>
#include <ToviFoundationKit/Foundation/NSComparisonPredicate.h>
#include <ToviFoundationKit/Foundation/NSCompoundPredicate.h>
#include <ToviFoundationKit/Foundation/NSData.h>
#include <ToviFoundationKit/Foundation/NSDate.h>
#include <ToviFoundationKit/Foundation/NSDateFormatter.h>
#include <ToviFoundationKit/Foundation/NSEnumerator.h>
#include <ToviFoundationKit/Foundation/NSFoundationVersion.h>
#include <ToviFoundationKit/Foundation/NSKeyedArchiver.h>
#include <ToviFoundationKit/Foundation/NSKeyedUnarchiver.h>
#include <ToviFoundationKit/Foundation/NSLock.h>
#include <ToviFoundationKit/Foundation/NSMutableArray.h>
#include <ToviFoundationKit/Foundation/NSMutableDictionary.h>
#include <ToviFoundationKit/Foundation/NSMutableIndexSet.h>
#include <ToviFoundationKit/Foundation/NSMutableSet.h>
#include <ToviFoundationKit/Foundation/NSNotificationCenter.h>
#include <ToviFoundationKit/Foundation/NSNull.h>
#include <ToviFoundationKit/Foundation/NSPort.h>
#include <ToviFoundationKit/Foundation/NSRunLoop.h>
#include <ToviFoundationKit/Foundation/NSScanner.h>
#include <ToviFoundationKit/Foundation/NSStringEncoding.h>
#include <ToviFoundationKit/Foundation/NSThread.h>
#include <ToviFoundationKit/Foundation/NSTimer.h>
#include <ToviFoundationKit/Foundation/NSUnarchiver.h>
#include <ToviFoundationKit/Foundation/PreferredLanguages.h>

#include <ToviFoundationKit/CoreFoundation/CFStringEncoding.h>
#include <ToviFoundationKit/CoreFoundation/CFUUID.h>

#include <ToviFoundationKit/AppKit/NSAppKitVersion.h>

#include <ToviFoundationKit/Extensions/InterThreadManager.h>
#include <ToviFoundationKit/Extensions/NSArray-QVLAdditions.h>
#include <ToviFoundationKit/Extensions/NSData-QVLAdditions.h>
#include <ToviFoundationKit/Extensions/NSDate-QVLAdditions.h>
#include <ToviFoundationKit/Extensions/NSDateFormatter-Extensions.h>
#include <ToviFoundationKit/Extensions/NSDictionary-QVLAdditions.h>
#include <ToviFoundationKit/Extensions/NSMutableArray-QVLAdditions.h>
#include <ToviFoundationKit/Extensions/NSMutableDictionary-ThreadSafety.h>
#include <ToviFoundationKit/Extensions/NSMutableString-QVLAdditions.h>
#include <ToviFoundationKit/Extensions/NSObject-Singleton.h>
#include <ToviFoundationKit/Extensions/NSPredicate-QVLAdditions.h>
#include <ToviFoundationKit/Extensions/NSSet-QVLAdditions.h>
#include <ToviFoundationKit/Extensions/NSString-HexStringRepresentations.h>
#include <ToviFoundationKit/Extensions/NSString-MIMEEncoding.h>
#include <ToviFoundationKit/Extensions/NSString-QuotedPrintable.h>
#include <ToviFoundationKit/Extensions/NSString-QVLAdditions.h>
#include <ToviFoundationKit/Extensions/NSString-Replacement.h>
#include <ToviFoundationKit/Extensions/NSString-Unique.h>
#include <ToviFoundationKit/Extensions/NSString-XMLEntities.h>
#include <ToviFoundationKit/Extensions/NSThread-NSNotificationCenter-QVLAdditions.h>
#include <ToviFoundationKit/Extensions/NSThread-QVLAdditions.h>
#include <ToviFoundationKit/Extensions/QVLRelativeDateFormatter.h>

#include <ToviFoundationKit/nodes/QVLHashNode.h>
#include <ToviFoundationKit/nodes/QVLNode.h>
#include <ToviFoundationKit/nodes/QVLNode2.h>
